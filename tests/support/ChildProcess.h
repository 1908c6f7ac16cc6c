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

/// What every program needs to run at all (PATH, locale, the sanitizers' settings), taken
/// from this process, and nothing that would tie it to this user's desktop.
Environment bareEnvironment();

/// A started program, the leader of a process group of its own. It gets SIGTERM when the
/// thread that started it dies, and it and its group are gone when this object is.
class ChildProcess {
public:
    struct Options {
        /// The program (looked up in PATH unless it holds a slash) and its arguments.
        std::vector<std::string> command;
        Environment environment = bareEnvironment();
        /// Where its output goes; nowhere when empty.
        std::filesystem::path standardOutput;
        std::filesystem::path standardError;
        /// A descriptor of ours that becomes the program's descriptor 3; -1 for none.
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

    /// Kills it and all that was started from it, as if in one moment, and returns when
    /// they have gone.
    void killFamily();

    /// Waits for its end; nothing when it still runs after `bound`.
    std::optional<Ending> waitForEnd(std::chrono::milliseconds bound = generousBound) const;

    /// Asks it to end, insists after `patience`, and returns when its family has gone.
    void stop(std::chrono::milliseconds patience = std::chrono::seconds(10));

    /// The processes of its group that still run: itself, and what it started unless that
    /// chose a group of its own.
    std::vector<pid_t> livingGroup() const;

private:
    pid_t pid_ = -1;
    /// Set once the process has been reaped and its number is no longer ours.
    std::optional<Ending> ending_;
};

std::ostream& operator<<(std::ostream& out, const ChildProcess::Ending& ending);

/// Runs a program to its end and returns its standard output. Throws std::runtime_error
/// with its standard error when it fails or outlasts the bound.
std::string runToEnd(std::vector<std::string> command, Environment environment);

}  // namespace tavrel::support
