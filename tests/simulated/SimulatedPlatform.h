#pragma once

#include <cstdint>

#include "platform/NotificationCenter.h"
#include "platform/Platform.h"
#include "tests/simulated/SimulatedHotKeys.h"
#include "tests/simulated/SimulatedLid.h"
#include "tests/simulated/SimulatedScheduler.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/simulated/SimulatedWallClock.h"
#include "tests/simulated/SimulatedWindowServer.h"

namespace tavrel {

/// A whole system in memory. Its parts are public, so that a test can put a decorator around
/// any of them and build a `Platform` of its own.
class SimulatedPlatform {
public:
    explicit SimulatedPlatform(
        std::uint64_t seed = 1,
        SimulatedWindowServer::WhenOff whenOff = SimulatedWindowServer::WhenOff::staysOnline)
        : scheduler(seed), windowServer(whenOff) {}

    /// `chooser` must outlive it.
    SimulatedPlatform(Chooser& chooser, SimulatedWindowServer::WhenOff whenOff)
        : scheduler(chooser), windowServer(whenOff) {}

    /// What dropped work holds may still use the parts below while it is destroyed.
    ~SimulatedPlatform() { scheduler.shutDown(); }
    SimulatedPlatform(const SimulatedPlatform&) = delete;
    SimulatedPlatform& operator=(const SimulatedPlatform&) = delete;

    Platform platform() {
        return {.displaySwitch = windowServer,
                .queries = windowServer,
                .reports = windowServer,
                .userDefaults = userDefaults,
                .wallClock = wallClock,
                .mainQueue = scheduler.mainQueue(),
                .backgroundQueue = scheduler.backgroundQueue(),
                .notificationCenter = notificationCenter};
    }

    SimulatedScheduler scheduler;
    SimulatedUserDefaults userDefaults;
    SimulatedHotKeys hotKeys;
    SimulatedWindowServer windowServer;
    /// Of no consequence unless a test puts it around the window server.
    SimulatedLid lid;
    SimulatedWallClock wallClock{scheduler};
    NotificationCenter notificationCenter{scheduler.mainQueue()};
};

}  // namespace tavrel
