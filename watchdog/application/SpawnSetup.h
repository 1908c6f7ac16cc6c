#pragma once

#include <spawn.h>

namespace tavrel::watchdog {

/// The number under which a guard finds its end of the connection.
inline constexpr int watchdogLink = 3;

/// How a guard process begins, from its very first instruction: `passed` is its connection,
/// its standard streams lead nowhere, it leads a session of its own, and the signals that
/// ask a program to end are held back from it.
class SpawnSetup {
public:
    explicit SpawnSetup(int passed);
    ~SpawnSetup();
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    /// False when the system had no memory for it.
    bool isComplete() const { return isComplete_; }
    const posix_spawn_file_actions_t* files() const { return &files_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    bool fill(int passed);

    posix_spawn_file_actions_t files_{};
    posix_spawnattr_t attributes_{};
    bool isComplete_ = false;
};

}  // namespace tavrel::watchdog
