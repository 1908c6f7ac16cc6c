#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/watchdog/program/WatchdogServiceFixture.h"

namespace tavrel::watchdog {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

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

TEST_F(WatchdogServiceTest, WhatIsHandedOverAndRefusedWhenAskedForIsSwitchedOnAtTheEnd) {
    server.switchFromOutside(1, false);
    displays.refuse(1, serverStatus::cannotComplete);
    pausesUntilAccepted = 1;

    EXPECT_THAT(serve({handOver(1), on(1, 1), goodbye}), ElementsAre(ready, answer(1, 1004)));

    EXPECT_TRUE(isOn(1));
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

TEST_F(WatchdogServiceTest, AServerThatAlwaysRefusesIsGivenUpAfterTwoSeconds) {
    server.switchFromOutside(1, false);
    displays.refuse(1, serverStatus::notImplemented);

    serve({off(1, 2), alreadyOff(1)});

    EXPECT_TRUE(isOn(2)) << "the others must not wait for it";
    EXPECT_EQ(paused, std::chrono::seconds(2));
}

TEST_F(WatchdogServiceTest, AnApplicationThatSaysItRunsIsNotAnswered) {
    EXPECT_THAT(serve({heartbeat, heartbeat, goodbye}), ElementsAre(ready));

    EXPECT_FALSE(hungUp);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
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
