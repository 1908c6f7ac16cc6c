#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "tests/watchdog/program/WatchdogServiceFixture.h"

namespace tavrel::watchdog {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// What it does because of what it sees, and not because it was asked.
class WatchdogLooksTest : public WatchdogServiceTest {};

TEST_F(WatchdogLooksTest, LooksAtTheDisplaysAtItsStartAndAtEachHeartbeat) {
    serve({heartbeat, heartbeat, heartbeat, goodbye});

    EXPECT_EQ(server.moments(), 4U);
}

TEST_F(WatchdogLooksTest, WhileTheApplicationIsSilentAndNothingIsUsableEverythingIsSwitchedOn) {
    server.connect({.id = 9, .builtIn = true});
    for (const DisplayID id : {1U, 2U, 3U, 9U}) {
        server.switchFromOutside(id, false);
    }

    serve({silence, goodbye});

    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(9, true), Pair(1, true), Pair(2, true), Pair(3, true)));
}

TEST_F(WatchdogLooksTest, WhileTheApplicationIsSilentWhatIsOffStaysOffIfAnythingIsUsable) {
    serve({off(1, 1), off(2, 3), silence, silence, silence, goodbye});

    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(1, false), Pair(3, false), Pair(3, true), Pair(1, true)))
        << "in the order of a good end, not in that of a rescue";
}

TEST_F(WatchdogLooksTest, WhileTheApplicationIsSilentAServerThatCannotSayIsLeftAlone) {
    server.setHasOnlineList(false);
    server.switchFromOutside(1, false);

    serve({silence, goodbye});

    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

/// The connection of an application to which display 2 is plugged in before its first message,
/// and whose displays are all switched off by another program just before it hangs.
class HangingApplication : public ScriptedChannel {
public:
    HangingApplication(std::deque<Received> said, SimulatedWindowServer& server)
        : ScriptedChannel(std::move(said)), server_(server) {}

    Received receive(std::chrono::milliseconds timeout) override {
        if (server_.find(2) == nullptr) {
            server_.connect({.id = 2});
        }
        Received received = ScriptedChannel::receive(timeout);
        if (received == Received(silence)) {
            for (const DisplayID id : {1U, 2U}) {
                server_.switchFromOutside(id, false);
            }
        }
        return received;
    }

private:
    SimulatedWindowServer& server_;
};

TEST_F(WatchdogLooksTest, ADisplayThatIsInNoListWhileItIsOffIsKnownFromEarlierLooks) {
    SimulatedWindowServer forgetful(SimulatedWindowServer::WhenOff::goesOffline);
    forgetful.setHasPrivateList(false);
    forgetful.connect({.id = 1});
    HangingApplication application({heartbeat, silence, goodbye}, forgetful);

    WatchdogService(forgetful, forgetful, application, [](auto /*time*/) {}).run();

    EXPECT_THAT(forgetful.takeChanges(), ElementsAre(Pair(1, true), Pair(2, true)));
}

/// The connection of an application that hangs; meanwhile the only display is unplugged and
/// another one, which nobody has switched on, plugged in.
class ApplicationAtAnotherDesk : public ScriptedChannel {
public:
    explicit ApplicationAtAnotherDesk(SimulatedWindowServer& server)
        : ScriptedChannel({silence}), server_(server) {}

    Received receive(std::chrono::milliseconds timeout) override {
        server_.disconnect(1);
        server_.connect({.id = 2, .enabled = false});
        return ScriptedChannel::receive(timeout);
    }

private:
    SimulatedWindowServer& server_;
};

TEST_F(WatchdogLooksTest, WhatIsPluggedInWhileTheApplicationIsSilentIsSwitchedOnToo) {
    SimulatedWindowServer desk;
    desk.connect({.id = 1});
    ApplicationAtAnotherDesk application(desk);

    WatchdogService(desk, desk, application, [](auto /*time*/) {}).run();

    EXPECT_THAT(desk.takeChanges(), Contains(Pair(2, true)));
}

/// The connection of an application beside which another program switches display 1.
class SharingApplication : public ScriptedChannel {
public:
    /// Before these messages, counting from 0, the other program switches it on, or off.
    using Acts = std::map<std::size_t, bool>;

    SharingApplication(std::deque<Received> said, SimulatedWindowServer& server, Acts acts)
        : ScriptedChannel(std::move(said)), server_(server), acts_(std::move(acts)) {}

    Received receive(std::chrono::milliseconds timeout) override {
        if (const auto act = acts_.find(received_); act != acts_.end()) {
            server_.switchFromOutside(1, act->second);
        }
        ++received_;
        return ScriptedChannel::receive(timeout);
    }

private:
    SimulatedWindowServer& server_;
    const Acts acts_;
    std::size_t received_ = 0;
};

TEST_F(WatchdogLooksTest, WhatAnotherProgramSwitchedOnAndOffAgainStaysOff) {
    SharingApplication application({off(1, 1), heartbeat, heartbeat, heartbeat}, server,
                                   {{2, true}, {4, false}});

    WatchdogService(displays, server, application, [](auto /*time*/) {}).run();

    EXPECT_FALSE(isOn(1));
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, false), Pair(1, true)))
        << "asked for while it was on, so that the server forgets that it was off";
}

TEST_F(WatchdogLooksTest, WhatWasOnAtOneLookOnlyIsSwitchedOnAtTheEnd) {
    SharingApplication application({off(1, 1), heartbeat, heartbeat}, server,
                                   {{2, true}, {3, false}});

    WatchdogService(displays, server, application, [](auto /*time*/) {}).run();

    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogLooksTest, WhatItSwitchesOffOnceMoreMustBeSeenOnTwiceAnew) {
    SharingApplication application({off(1, 1), heartbeat, off(2, 1), heartbeat}, server,
                                   {{1, true}, {3, true}, {4, false}});

    WatchdogService(displays, server, application, [](auto /*time*/) {}).run();

    EXPECT_TRUE(isOn(1));
}

/// A server that whoever may be answered by what it said lately is told of as it was at first.
class ServerWithAMemory : public DisplayQueries {
public:
    explicit ServerWithAMemory(SimulatedWindowServer& server) : server_(server) {
        for (const DisplayID id : {1U, 2U, 3U}) {
            atFirst_.connect({.id = id});
        }
    }

    std::unique_ptr<DisplayMoment> now() override { return server_.now(); }
    std::unique_ptr<DisplayMoment> lately() override { return atFirst_.now(); }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return server_.now(); }

private:
    SimulatedWindowServer& server_;
    SimulatedWindowServer atFirst_;
};

TEST_F(WatchdogLooksTest, WhatItHasJustSwitchedOffIsNotTakenForOnByHeartbeatsThatHaveWaited) {
    ServerWithAMemory remembered(server);
    ScriptedChannel application({off(1, 1), heartbeat, heartbeat, off(2, 2)});

    WatchdogService(displays, remembered, application, [](auto /*time*/) {}).run();

    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(1, false), Pair(2, false), Pair(2, true), Pair(1, true)));
}

TEST_F(WatchdogLooksTest, ASilentApplicationIsGivenFiveSecondsAndThenLookedAfterEachSecond) {
    using namespace std::chrono_literals;

    serve({heartbeat, silence, silence, heartbeat, goodbye});

    EXPECT_THAT(timeouts, ElementsAre(5000ms, 5000ms, 1000ms, 1000ms, 5000ms));
}

TEST_F(WatchdogLooksTest, WhatARescueSwitchedOnIsNotSwitchedOnAgainAtTheEnd) {
    server.switchFromOutside(2, false);
    server.switchFromOutside(3, false);
    server.switchFromOutside(1, false);

    serve({alreadyOff(1), silence});

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true), Pair(2, true), Pair(3, true)));
}

TEST_F(WatchdogLooksTest, AfterATimeoutAtTheServerADisplayCountsAsOff) {
    displays.refuse(1, serverStatus::notImplemented);
    pausesUntilAccepted = 1;

    EXPECT_THAT(serve({off(1, 1)}), ElementsAre(ready, answer(1, 1006)));

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true)));
}

/// Ends the silence of the server as soon as it has been told of it.
class PatientApplication : public ScriptedChannel {
public:
    PatientApplication(std::deque<Received> said, ScriptedSwitch& displays)
        : ScriptedChannel(std::move(said)), displays_(displays) {}

    bool send(const Message& message) override {
        if (message.kind == Message::Kind::answer &&
            message.status == serverStatus::notImplemented) {
            displays_.refuse(1, serverStatus::success);
        }
        return ScriptedChannel::send(message);
    }

private:
    ScriptedSwitch& displays_;
};

TEST_F(WatchdogLooksTest, AfterATimeoutTwoLooksThatFindTheDisplayOnSettleIt) {
    displays.refuse(1, serverStatus::notImplemented);
    PatientApplication application({off(1, 1), heartbeat, heartbeat}, displays);
    int attempts = 0;

    WatchdogService(displays, server, application, [&](auto /*time*/) { ++attempts; }).run();

    EXPECT_EQ(attempts, 0) << "there was nothing to switch on";
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true)))
        << "asked for while it was on, so that the server forgets that it was to go off";
}

}  // namespace
}  // namespace tavrel::watchdog
