#include "watchdog/application/WatchdogProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <initializer_list>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

extern char** environ;  // NOLINT(*-avoid-non-const-global-variables): the system's.

namespace tavrel::watchdog {
namespace {

/// The number under which a watchdog finds its end of the connection.
constexpr int watchdogLink = 3;

/// One that still switches displays on after this time goes on without being waited for.
constexpr std::chrono::seconds endTimeout{5};
/// One that has nothing to do ends within milliseconds. After this time it is killed.
constexpr std::chrono::seconds dismissalTimeout{2};
/// A killed process is gone at once, unless the system itself keeps it: in a call that cannot
/// be interrupted, or for a debugger. It does nothing more then, and need not be awaited.
constexpr std::chrono::seconds killTimeout{1};
constexpr std::chrono::milliseconds pollInterval{1};

/// Passes on no descriptor but those named, where the system can do that by itself.
#ifdef POSIX_SPAWN_CLOEXEC_DEFAULT
constexpr int passNoOthers = POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
constexpr int passNoOthers = 0;
#endif

sigset_t signalsThatAskToEnd() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        sigaddset(&signals, signal);
    }
    return signals;
}

/// How a watchdog process begins, from its very first instruction: `passed` is its
/// connection, its standard streams are /dev/null, it leads a session of its own, and the
/// signals that ask a program to end are blocked.
class SpawnSetup {
public:
    explicit SpawnSetup(int passed) {
        posix_spawn_file_actions_init(&files_);
        posix_spawnattr_init(&attributes_);
        isComplete_ = fill(passed);
    }
    ~SpawnSetup() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&files_);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    /// False when the system had no memory for it.
    bool isComplete() const { return isComplete_; }
    const posix_spawn_file_actions_t* files() const { return &files_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    bool fill(int passed) {
        int failures = 0;
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            failures |= posix_spawn_file_actions_addopen(&files_, stream, "/dev/null", O_RDWR, 0);
        }
        failures |= posix_spawn_file_actions_adddup2(&files_, passed, watchdogLink);

        const sigset_t blocked = signalsThatAskToEnd();
        failures |= posix_spawnattr_setsigmask(&attributes_, &blocked);
        constexpr int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID | passNoOthers;
        failures |= posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
        return failures == 0;
    }

    posix_spawn_file_actions_t files_{};
    posix_spawnattr_t attributes_{};
    bool isComplete_ = false;
};

/// Reaps the child if it has ended, and returns whether it has; its number is then free for
/// other processes.
bool reap(pid_t pid) {
    pid_t reaped = -1;
    do {
        reaped = waitpid(pid, nullptr, WNOHANG);
    } while (reaped < 0 && errno == EINTR);
    // Fails when the child was reaped already, by a program that reaps all its children.
    return reaped != 0;
}

}  // namespace

std::unique_ptr<WatchdogProcess> WatchdogProcess::start(const std::filesystem::path& executable,
                                                        const std::vector<Message>& first,
                                                        std::string windowServer) {
    auto ends = makeSocketPair();
    if (!ends) {
        return nullptr;
    }
    MessageSocket ours(std::move(ends->first));
    const FileDescriptor theirs = std::move(ends->second);
    // Before it runs: this process may be gone the moment after.
    if (!sendAll(ours, first)) {
        return nullptr;
    }
    // Above the number it will have there: dup2 of a descriptor onto itself would leave it
    // close-on-exec.
    const FileDescriptor passed(fcntl(theirs.number(), F_DUPFD_CLOEXEC, watchdogLink + 1));
    const SpawnSetup setup(passed.number());
    if (!passed.isOpen() || !setup.isComplete()) {
        return nullptr;
    }
    const std::string program = executable.string();
    // Without its folder, which may be called like the application: who ends everything with
    // that name in its command line does not mean the one that is to survive it.
    std::string name = executable.filename().string();
    std::string link = std::to_string(watchdogLink);
    char* const server = windowServer.empty() ? nullptr : windowServer.data();
    char* const arguments[] = {name.data(), link.data(), server, nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, program.c_str(), setup.files(), setup.attributes(), arguments, environ) !=
        0) {
        return nullptr;
    }
    return std::make_unique<WatchdogProcess>(std::move(ours), pid);
}

WatchdogProcess::WatchdogProcess(MessageSocket link, pid_t pid)
    : link_(std::in_place, std::move(link)), pid_(pid) {}

WatchdogProcess::~WatchdogProcess() {
    link_.reset();
    if (!isKilled_) {
        awaitEnd(endTimeout);
    }
}

void WatchdogProcess::dismiss() {
    link_->send({.kind = Message::Kind::goodbye});
    link_.reset();
    if (!awaitEnd(dismissalTimeout)) {
        kill();
    }
}

void WatchdogProcess::kill() {
    if (!awaitEnd(std::chrono::milliseconds::zero())) {
        ::kill(pid_, SIGKILL);
        isKilled_ = true;
        awaitEnd(killTimeout);
    }
}

bool WatchdogProcess::awaitEnd(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    isReaped_ = isReaped_ || reap(pid_);
    while (!isReaped_ && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(pollInterval);
        isReaped_ = reap(pid_);
    }
    return isReaped_;
}

std::filesystem::path findWatchdog(const std::filesystem::path& applicationFolder) {
    for (const char* place :
         {"libexec/display-watchdog", TAVREL_INSTALLED_WATCHDOG, "display-watchdog"}) {
        std::filesystem::path executable = applicationFolder / place;
        std::error_code error;
        if (std::filesystem::is_regular_file(executable, error)) {
            return executable;
        }
    }
    return {};
}

}  // namespace tavrel::watchdog
