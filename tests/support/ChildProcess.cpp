#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/posix/WakeUp.h"
#include "tests/support/ProcessTable.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

/// Everything the new process needs, prepared before the fork: between fork and exec only
/// async-signal-safe calls are allowed, because this process may have other threads.
struct Launch {
    std::vector<std::string> arguments;
    std::vector<std::string> variables;
    std::string standardOutput;
    std::string standardError;
    int descriptorThree;
    int failurePipe;
    pid_t parent;
};

bool redirect(int target, const std::string& file) {
    const char* path = file.empty() ? "/dev/null" : file.c_str();
    const int fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    return fd >= 0 && ::dup2(fd, target) == target;
}

[[noreturn]] void becomeProgram(const Launch& launch, char* const* arguments,
                                char* const* variables) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int nowhere = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const bool ready = ::getppid() == launch.parent &&
                       ::dup2(nowhere, STDIN_FILENO) == STDIN_FILENO &&
                       redirect(STDOUT_FILENO, launch.standardOutput) &&
                       redirect(STDERR_FILENO, launch.standardError) &&
                       (launch.descriptorThree < 0 || ::dup2(launch.descriptorThree, 3) == 3);
    if (ready) {
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        // Ignored here, but not where programs are usually started.
        ::signal(SIGPIPE, SIG_DFL);
        ::execvpe(arguments[0], arguments, variables);
    }
    const int error = errno;
    if (::write(launch.failurePipe, &error, sizeof error) < 0) {
        ::_exit(126);
    }
    ::_exit(127);
}

}  // namespace

Environment bareEnvironment() {
    Environment environment{{"LANG", "C.UTF-8"}, {"LC_ALL", "C.UTF-8"}};
    for (const char* name : {"PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS",
                             "UBSAN_OPTIONS", "LD_LIBRARY_PATH", "TMPDIR"}) {
        if (const char* value = std::getenv(name)) {
            environment[name] = value;
        }
    }
    return environment;
}

ChildProcess::ChildProcess(const Options& options) {
    // Descriptor 3 must not be taken by the pipe itself in the child.
    Pipe failure;
    FileDescriptor report(::fcntl(failure.writeEnd.number(), F_DUPFD_CLOEXEC, 10));
    failure.writeEnd.close();
    Launch launch{options.command,
                  {},
                  options.standardOutput.string(),
                  options.standardError.string(),
                  options.descriptorThree,
                  report.number(),
                  ::getpid()};
    for (const auto& [name, value] : options.environment) {
        launch.variables.push_back(name);
        launch.variables.back().append("=").append(value);
    }
    const std::vector<char*> arguments = pointers(launch.arguments);
    const std::vector<char*> variables = pointers(launch.variables);

    pid_ = ::fork();
    if (pid_ == 0) {
        becomeProgram(launch, arguments.data(), variables.data());
    }
    report.close();
    int error = errno;
    if (pid_ < 0 || ::read(failure.readEnd.number(), &error, sizeof error) > 0) {
        if (pid_ > 0) {
            ::waitpid(pid_, nullptr, 0);
        }
        throw std::runtime_error("cannot start " + options.command.front() + ": " +
                                 std::generic_category().message(error));
    }
}

ChildProcess::~ChildProcess() {
    stop();
}

bool ChildProcess::isRunning() const {
    return !waitForEnd(std::chrono::milliseconds(0)).has_value();
}

void ChildProcess::signal(int number) const {
    if (!ending_) {
        ::kill(pid_, number);
    }
}

std::optional<ChildProcess::Ending> ChildProcess::waitForEnd(
    std::chrono::milliseconds timeout) const {
    if (ending_) {
        return ending_;
    }
    siginfo_t info{};
    // The process is not reaped yet, so that its number, which is also its group's, is not
    // used again while this object may still send signals to it.
    const bool ended = waitUntil(
        [&] {
            info = {};
            return ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) !=
                       0 ||
                   info.si_pid == pid_;
        },
        timeout);
    if (!ended) {
        return std::nullopt;
    }
    if (info.si_code == CLD_EXITED) {
        return Ending{info.si_status, std::nullopt};
    }
    return Ending{std::nullopt, info.si_status};
}

void ChildProcess::stop(std::chrono::milliseconds timeout) {
    if (ending_) {
        return;
    }
    if (isRunning()) {
        ::kill(pid_, SIGTERM);
        waitForEnd(timeout);
    }
    killFamily();
}

void ChildProcess::killFamily() {
    if (ending_) {
        return;
    }
    // All are stopped before the first is killed, so that none can react to another's end.
    std::vector<pid_t> family;
    std::size_t halted = 0;
    do {
        halted = family.size();
        family = familyOf(pid_);
        for (const pid_t each : family) {
            ::kill(each, SIGSTOP);
        }
    } while (family.size() > halted);
    for (const pid_t each : family) {
        ::kill(each, SIGKILL);
    }
    const auto ending = waitForEnd();
    waitUntil([&] { return familyOf(pid_).empty(); });
    ::waitpid(pid_, nullptr, 0);
    ending_ = ending.value_or(Ending{});
}

std::vector<pid_t> ChildProcess::livingGroup() const {
    std::vector<pid_t> living;
    for (const ListedProcess& each : runningProcesses()) {
        if (each.group == pid_) {
            living.push_back(each.pid);
        }
    }
    return living;
}

std::ostream& operator<<(std::ostream& out, const ChildProcess::Ending& ending) {
    if (ending.exitStatus) {
        return out << "exit status " << *ending.exitStatus;
    }
    return out << "signal " << ending.signal.value_or(0);
}

std::string runToEnd(std::vector<std::string> command, Environment environment) {
    const TemporaryFolder folder;
    const std::string name = command.front();
    const ChildProcess process({std::move(command), std::move(environment), folder.path() / "out",
                                folder.path() / "err", -1});
    const auto ending = process.waitForEnd();
    if (!ending || ending->exitStatus != 0) {
        std::ostringstream message;
        message << name << " failed";
        if (ending) {
            message << " with " << *ending;
        }
        message << ": " << readFile(folder.path() / "err");
        throw std::runtime_error(message.str());
    }
    return readFile(folder.path() / "out");
}

}  // namespace tavrel::support
