#include "watchdog/program/WatchdogService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulated/ScriptedSwitch.h"
#include "tests/simulated/SimulatedScheduler.h"
#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/watchdog/program/ScriptedChannel.h"

namespace tavrel::watchdog {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Kind = Message::Kind;

constexpr Message ready{.kind = Kind::ready};
constexpr Message goodbye{.kind = Kind::goodbye};
constexpr Message heartbeat{.kind = Kind::heartbeat};
constexpr NoMessage silence = NoMessage::timedOut;
constexpr Message off(std::uint32_t id, DisplayID display) {
    return {.kind = Kind::switchOff, .id = id, .display = display};
}
constexpr Message on(std::uint32_t id, DisplayID display) {
    return {.kind = Kind::switchOn, .id = id, .display = display};
}
constexpr Message answer(std::uint32_t id, ServerStatus status) {
    return {.kind = Kind::answer, .id = id, .status = status};
}
constexpr Message handOver(DisplayID display) {
    return {.kind = Kind::handOver, .display = display};
}
constexpr Message alreadyOff(DisplayID display) {
    return {.kind = Kind::alreadyOff, .display = display};
}

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

TEST_F(WatchdogServiceTest, LooksAtTheDisplaysAtItsStartAndAtEachHeartbeat) {
    serve({heartbeat, heartbeat, heartbeat, goodbye});

    EXPECT_EQ(server.moments(), 4U);
}

TEST_F(WatchdogServiceTest, SaysThatItIsReadyAndAnswersEachRequestUnderItsNumber) {
    EXPECT_THAT(serve({off(7, 1), on(3, 1), goodbye}),
                ElementsAre(ready, answer(7, 0), answer(3, 0)));

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, false), Pair(1, true)));
}

TEST_F(WatchdogServiceTest, PassesTheServersStatusOnAsItIs) {
    displays.refuse(2, -17);

    EXPECT_THAT(serve({off(1, 9), off(2, 2), goodbye}),
                ElementsAre(ready, answer(1, 1001), answer(2, -17)));
}

TEST_F(WatchdogServiceTest, AfterAGoodbyeSwitchesOnWhatItSwitchedOffAndTheApplicationMissed) {
    serve({off(1, 1), goodbye});

    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogServiceTest, AfterAGoodbyeWithNothingOffChangesNothing) {
    server.switchFromOutside(2, false);

    serve({off(1, 1), on(2, 1), goodbye});

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, false), Pair(1, true)));
}

TEST_F(WatchdogServiceTest, SwitchesOnWhatIsHandedOverAtTheEndWhoeverSwitchedItOff) {
    server.switchFromOutside(2, false);

    EXPECT_THAT(serve({off(1, 1), handOver(2), heartbeat}), ElementsAre(ready, answer(1, 0)));

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
}

TEST_F(WatchdogServiceTest, WhatIsHandedOverStaysOffUntilTheEnd) {
    server.switchFromOutside(2, false);

    serve({handOver(2), off(1, 3), heartbeat, on(2, 3)});

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(3, false), Pair(3, true), Pair(2, true)));
}

TEST_F(WatchdogServiceTest, WhatIsHandedOverAndThenSwitchedOnByRequestIsNotSwitchedOnTwice) {
    server.switchFromOutside(2, false);

    serve({handOver(2), on(1, 2), goodbye});

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(2, true)));
}

TEST_F(WatchdogServiceTest, NobodyInsistsOnADisplayThatWasHandedOverAndIsNotThere) {
    server.disconnect(2);

    EXPECT_THAT(serve({alreadyOff(2), handOver(2), on(1, 2), goodbye}),
                ElementsAre(ready, answer(1, 1001)));

    EXPECT_EQ(pauses, 0);
}

TEST_F(WatchdogServiceTest, WithoutAGoodbyeSwitchesOnWhatItSwitchedOffLatestFirst) {
    serve({off(1, 1), off(2, 3)});

    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(1, false), Pair(3, false), Pair(3, true), Pair(1, true)));
    EXPECT_EQ(pauses, 0);
}

TEST_F(WatchdogServiceTest, WhatWasSwitchedOnAgainIsNotSwitchedOnTwice) {
    serve({off(1, 1), on(2, 1)});

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, false), Pair(1, true)));
}

TEST_F(WatchdogServiceTest, WhatCouldNotBeSwitchedOnWhenAskedIsSwitchedOnAtTheEnd) {
    server.switchFromOutside(1, false);
    displays.refuse(1, serverStatus::cannotComplete);
    pausesUntilAccepted = 1;

    EXPECT_THAT(serve({alreadyOff(1), on(1, 1)}), ElementsAre(ready, answer(1, 1004)));

    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogServiceTest, WhatCouldNotBeSwitchedOffIsNotSwitchedOn) {
    displays.refuse(1, serverStatus::cannotComplete);

    serve({off(1, 1)});

    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchdogServiceTest, ADisplayThatAnotherProgramSwitchedOffStaysOff) {
    server.switchFromOutside(2, false);

    serve({off(1, 1)});

    EXPECT_TRUE(isOn(1));
    EXPECT_FALSE(isOn(2));
}

TEST_F(WatchdogServiceTest, WhatItWasToldIsOffIsSwitchedOnToo) {
    server.switchFromOutside(2, false);

    EXPECT_THAT(serve({alreadyOff(2)}), ElementsAre(ready));

    EXPECT_TRUE(isOn(2));
}

TEST_F(WatchdogServiceTest, AServerThatRefusesAtFirstIsAskedAgain) {
    server.switchFromOutside(1, false);
    displays.refuse(1, serverStatus::cannotComplete);
    pausesUntilAccepted = 3;

    serve({alreadyOff(1), alreadyOff(2)});

    EXPECT_TRUE(isOn(1));
    EXPECT_EQ(pauses, 3);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(2, true), Pair(1, true)));
}

TEST_F(WatchdogServiceTest, AServerThatAlwaysRefusesIsGivenUpAfterAFewSeconds) {
    server.switchFromOutside(1, false);
    displays.refuse(1, serverStatus::notImplemented);

    serve({off(1, 2), alreadyOff(1)});

    EXPECT_TRUE(isOn(2)) << "the others must not wait for it";
    EXPECT_EQ(paused, (insistentAttempts - 1) * insistenceInterval);
    EXPECT_LE(paused, std::chrono::seconds(5));
}

TEST_F(WatchdogServiceTest, AnApplicationThatSaysItRunsIsNotAnswered) {
    EXPECT_THAT(serve({heartbeat, heartbeat, goodbye}), ElementsAre(ready));

    EXPECT_FALSE(hungUp);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchdogServiceTest, WhileTheApplicationIsSilentAndNothingIsUsableEverythingIsSwitchedOn) {
    server.connect({.id = 9, .builtIn = true});
    for (const DisplayID id : {1U, 2U, 3U, 9U}) {
        server.switchFromOutside(id, false);
    }

    serve({silence, goodbye});

    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(9, true), Pair(1, true), Pair(2, true), Pair(3, true)));
}

TEST_F(WatchdogServiceTest, WhileTheApplicationIsSilentWhatIsOffStaysOffIfAnythingIsUsable) {
    serve({off(1, 1), off(2, 3), silence, silence, silence, goodbye});

    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(1, false), Pair(3, false), Pair(3, true), Pair(1, true)))
        << "in the order of a good end, not in that of a rescue";
}

TEST_F(WatchdogServiceTest, WhileTheApplicationIsSilentAServerThatCannotSayIsLeftAlone) {
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

TEST_F(WatchdogServiceTest, ADisplayThatIsInNoListWhileItIsOffIsKnownFromEarlierLooks) {
    SimulatedWindowServer forgetful(SimulatedWindowServer::WhenOff::goesOffline);
    forgetful.setHasPrivateList(false);
    forgetful.connect({.id = 1});
    HangingApplication application({heartbeat, silence, goodbye}, forgetful);

    WatchdogService(forgetful, forgetful, application, [](auto /*time*/) {}).run();

    EXPECT_THAT(forgetful.takeChanges(), ElementsAre(Pair(1, true), Pair(2, true)));
}

/// The connection of an application beside which another program switches display 1.
class SharingApplication : public ScriptedChannel {
public:
    /// Before each of these messages, counting from 0, the other program acts.
    struct Acts {
        std::size_t on;
        std::size_t off;
    };

    SharingApplication(std::deque<Received> said, SimulatedWindowServer& server, Acts acts)
        : ScriptedChannel(std::move(said)), server_(server), acts_(acts) {}

    Received receive(std::chrono::milliseconds timeout) override {
        if (received_ == acts_.on || received_ == acts_.off) {
            server_.switchFromOutside(1, received_ == acts_.on);
        }
        ++received_;
        return ScriptedChannel::receive(timeout);
    }

private:
    SimulatedWindowServer& server_;
    const Acts acts_;
    std::size_t received_ = 0;
};

TEST_F(WatchdogServiceTest, WhatAnotherProgramSwitchedOnAndOffAgainStaysOff) {
    SharingApplication application({off(1, 1), heartbeat, heartbeat, heartbeat}, server,
                                   {.on = 2, .off = 4});

    WatchdogService(displays, server, application, [](auto /*time*/) {}).run();

    EXPECT_FALSE(isOn(1));
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, false), Pair(1, true)))
        << "asked for while it was on, so that the server forgets that it was off";
}

TEST_F(WatchdogServiceTest, WhatWasOnAtOneLookOnlyIsSwitchedOnAtTheEnd) {
    SharingApplication application({off(1, 1), heartbeat, heartbeat}, server, {.on = 2, .off = 3});

    WatchdogService(displays, server, application, [](auto /*time*/) {}).run();

    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogServiceTest, ASilentApplicationIsGivenFiveSecondsAndThenLookedAfterEachSecond) {
    using namespace std::chrono_literals;

    serve({heartbeat, silence, silence, heartbeat, goodbye});

    EXPECT_THAT(timeouts, ElementsAre(5000ms, 5000ms, 1000ms, 1000ms, 5000ms));
}

TEST_F(WatchdogServiceTest, WhatARescueSwitchedOnIsNotSwitchedOnAgainAtTheEnd) {
    server.switchFromOutside(2, false);
    server.switchFromOutside(3, false);
    server.switchFromOutside(1, false);

    serve({alreadyOff(1), silence});

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true), Pair(2, true), Pair(3, true)));
}

TEST_F(WatchdogServiceTest, AfterATimeoutAtTheServerADisplayCountsAsOff) {
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
        if (message.kind == Kind::answer && message.status == serverStatus::notImplemented) {
            displays_.refuse(1, serverStatus::success);
        }
        return ScriptedChannel::send(message);
    }

private:
    ScriptedSwitch& displays_;
};

TEST_F(WatchdogServiceTest, AfterATimeoutTwoLooksThatFindTheDisplayOnSettleIt) {
    displays.refuse(1, serverStatus::notImplemented);
    PatientApplication application({off(1, 1), heartbeat, heartbeat}, displays);
    int attempts = 0;

    WatchdogService(displays, server, application, [&](auto /*time*/) { ++attempts; }).run();

    EXPECT_EQ(attempts, 0) << "there was nothing to switch on";
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true)))
        << "asked for while it was on, so that the server forgets that it was to go off";
}

TEST_F(WatchdogServiceTest, WhatIsNotAMessageEndsTheConversationWithoutAChange) {
    EXPECT_THAT(serve({NoMessage::malformed, off(1, 1)}), ElementsAre(ready));

    EXPECT_TRUE(hungUp) << "it waits until the other side is gone";
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchdogServiceTest, WhatIsOffIsSwitchedOnAlsoAfterWhatIsNotAMessage) {
    serve({off(1, 1), NoMessage::malformed});

    EXPECT_TRUE(hungUp);
    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogServiceTest, WhatOnlyAWatchdogMaySayEndsTheConversationToo) {
    for (const Message& message : {ready, answer(1, 0)}) {
        EXPECT_THAT(serve({message, off(1, 1)}), ElementsAre(ready));

        EXPECT_TRUE(hungUp);
        EXPECT_THAT(server.takeChanges(), IsEmpty());
    }
}

}  // namespace
}  // namespace tavrel::watchdog
