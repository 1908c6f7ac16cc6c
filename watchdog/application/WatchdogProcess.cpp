#include "watchdog/application/WatchdogProcess.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <utility>

#include "watchdog/application/SpawnSetup.h"

extern char** environ;  // NOLINT(*-avoid-non-const-global-variables): the system's.

namespace tavrel::watchdog {
namespace {

/// A guard with nothing to do ends within milliseconds. One that still switches displays
/// on when this is over does so alone.
constexpr std::chrono::seconds patience{5};
constexpr std::chrono::milliseconds glance{1};

enum class Wait { forEnd, notAtAll };

/// Whether the child has ended; then its number is free for others.
bool reap(pid_t pid, Wait wait) {
    pid_t reaped = -1;
    do {
        reaped = waitpid(pid, nullptr, wait == Wait::forEnd ? 0 : WNOHANG);
    } while (reaped < 0 && errno == EINTR);
    // An error is that it was reaped already, by a program that reaps all its children.
    return reaped != 0;
}

}  // namespace

std::unique_ptr<WatchdogProcess> WatchdogProcess::start(const std::filesystem::path& executable) {
    auto ends = makeSocketPair();
    if (!ends) {
        return nullptr;
    }
    auto& [ours, theirs] = *ends;
    // Above the number it will have there, so that passing it on is always a real copy.
    const FileDescriptor passed(fcntl(theirs.number(), F_DUPFD_CLOEXEC, watchdogLink + 1));
    const SpawnSetup setup(passed.number());
    if (!passed.isOpen() || !setup.isComplete()) {
        return nullptr;
    }
    std::string program = executable.string();
    std::string link = std::to_string(watchdogLink);
    char* const arguments[] = {program.data(), link.data(), nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, program.c_str(), setup.files(), setup.attributes(), arguments, environ) !=
        0) {
        return nullptr;
    }
    return std::make_unique<WatchdogProcess>(std::move(ours), pid);
}

WatchdogProcess::WatchdogProcess(FileDescriptor link, pid_t pid)
    : link_(std::in_place, std::move(link)), pid_(pid) {}

WatchdogProcess::~WatchdogProcess() {
    link_.reset();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!isReaped_ && std::chrono::steady_clock::now() < deadline) {
        isReaped_ = reap(pid_, Wait::notAtAll);
        if (!isReaped_) {
            std::this_thread::sleep_for(glance);
        }
    }
}

void WatchdogProcess::kill() {
    // One that is gone already may be nobody's child any more, and its number another's.
    isReaped_ = isReaped_ || reap(pid_, Wait::notAtAll);
    if (!isReaped_) {
        ::kill(pid_, SIGKILL);
        isReaped_ = reap(pid_, Wait::forEnd);
    }
}

}  // namespace tavrel::watchdog
