#include "watchdog/application/SpawnSetup.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace tavrel::watchdog {
namespace {

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

}  // namespace

SpawnSetup::SpawnSetup(int passed) {
    posix_spawn_file_actions_init(&files_);
    posix_spawnattr_init(&attributes_);
    isComplete_ = fill(passed);
}

SpawnSetup::~SpawnSetup() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&files_);
}

bool SpawnSetup::fill(int passed) {
    int failures = 0;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        failures |= posix_spawn_file_actions_addopen(&files_, stream, "/dev/null", O_RDWR, 0);
    }
    failures |= posix_spawn_file_actions_adddup2(&files_, passed, watchdogLink);

    const sigset_t held = signalsThatAskToEnd();
    failures |= posix_spawnattr_setsigmask(&attributes_, &held);
    constexpr int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID | passNoOthers;
    failures |= posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    return failures == 0;
}

}  // namespace tavrel::watchdog
