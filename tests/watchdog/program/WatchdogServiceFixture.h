#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "tests/simulated/ScriptedSwitch.h"
#include "tests/simulated/SimulatedScheduler.h"
#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/watchdog/program/ScriptedChannel.h"
#include "watchdog/program/WatchdogService.h"

namespace tavrel::watchdog {

inline constexpr Message ready{.kind = Message::Kind::ready};
inline constexpr Message goodbye{.kind = Message::Kind::goodbye};
inline constexpr Message heartbeat{.kind = Message::Kind::heartbeat};
inline constexpr NoMessage silence = NoMessage::timedOut;
inline constexpr Message off(std::uint32_t id, DisplayID display) {
    return {.kind = Message::Kind::switchOff, .id = id, .display = display};
}
inline constexpr Message on(std::uint32_t id, DisplayID display) {
    return {.kind = Message::Kind::switchOn, .id = id, .display = display};
}
inline constexpr Message answer(std::uint32_t id, ServerStatus status) {
    return {.kind = Message::Kind::answer, .id = id, .status = status};
}
inline constexpr Message handOver(DisplayID display) {
    return {.kind = Message::Kind::handOver, .display = display};
}
inline constexpr Message alreadyOff(DisplayID display) {
    return {.kind = Message::Kind::alreadyOff, .display = display};
}

/// A watchdog's service with three displays that are on, and what it may hear and say.
class WatchdogServiceTest : public testing::Test {
protected:
    WatchdogServiceTest() {
        for (const DisplayID id : {1U, 2U, 3U}) {
            server.connect({.id = id});
        }
    }

    /// Lets a watchdog hear all this and then the end; returns what it said.
    std::vector<Message> serve(std::deque<Received> said) {
        ScriptedChannel channel(std::move(said));
        WatchdogService(displays, server, channel, [this](auto time) { pause(time); }).run();
        hungUp = channel.hungUp();
        timeouts = channel.timeouts();
        return channel.heard();
    }

    void pause(std::chrono::milliseconds time) {
        paused += time;
        ++pauses;
        if (pauses == pausesUntilAccepted) {
            displays.refuse(1, serverStatus::success);
        }
    }

    bool isOn(DisplayID display) const { return server.find(display)->enabled; }

    SimulatedWindowServer server;
    SimulatedScheduler scheduler;
    ScriptedSwitch displays{server, scheduler};
    std::chrono::milliseconds paused{0};
    int pauses = 0;
    int pausesUntilAccepted = -1;
    bool hungUp = false;
    std::vector<std::chrono::milliseconds> timeouts;
};

}  // namespace tavrel::watchdog
