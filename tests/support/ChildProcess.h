#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

/// The environment a program is started with, whole: nothing is inherited.
using Environment = std::map<std::string, std::string>;

/// What every program needs to run (PATH, locale, settings of the sanitizers), taken from this
/// process, without anything that belongs to this user's desktop.
Environment bareEnvironment();

/// A running program, the leader of its own process group. It gets SIGTERM when the thread that
/// started it ends; the destructor ends it and its group.
class ChildProcess {
public:
    struct Options {
        /// The program (looked up in PATH unless it holds a slash) and its arguments.
        std::vector<std::string> command;
        Environment environment = bareEnvironment();
        /// Files for its output, which is discarded where they are empty.
        std::filesystem::path standardOutput;
        std::filesystem::path standardError;
        /// A descriptor of this process that becomes the program's descriptor 3; -1 for none.
        int descriptorThree = -1;
    };

    /// How a program ended: with an exit status, or by a signal.
    struct Ending {
        std::optional<int> exitStatus;
        std::optional<int> signal;
        friend bool operator==(const Ending&, const Ending&) = default;
    };

    /// Throws std::runtime_error when the program cannot be started.
    explicit ChildProcess(const Options& options);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    bool isRunning() const;

    /// Sends a signal to the program itself. Does nothing once it has ended.
    void signal(int number) const;

    /// Kills it and every process started from it, at once, and blocks until they are gone.
    void killFamily();

    /// Blocks until it has ended. std::nullopt when it still runs after `timeout`.
    std::optional<Ending> waitForEnd(std::chrono::milliseconds timeout = defaultTimeout) const;

    /// Asks it to end, kills it after `timeout`, and blocks until every process started from it
    /// is gone too.
    void stop(std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// The running processes of its group: itself, and those it started that did not choose
    /// another group.
    std::vector<pid_t> livingGroup() const;

private:
    pid_t pid_ = -1;
    /// Set once the process has been reaped and its number is no longer ours.
    std::optional<Ending> ending_;
};

std::ostream& operator<<(std::ostream& out, const ChildProcess::Ending& ending);

/// Runs a program to its end and returns its standard output. Throws std::runtime_error with
/// its standard error when it fails or does not end in time.
std::string runToEnd(std::vector<std::string> command, Environment environment);

}  // namespace tavrel::support
