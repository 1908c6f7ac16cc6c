#include "watchdog/protocol/SwitchedOff.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/watchdog/ReportedDisplays.h"

namespace tavrel::watchdog {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SwitchedOffTest : public testing::Test {
protected:
    void settle() { off.settle(*server.now()); }

    SwitchedOff off;
    ReportedDisplays server;
};

TEST_F(SwitchedOffTest, KeepsTheOrderAndEachDisplayOnce) {
    off.add(3);
    off.add(1);
    off.add(3);

    EXPECT_THAT(off.displays(), ElementsAre(3, 1));
    EXPECT_TRUE(off.contains(1));
    EXPECT_FALSE(off.contains(2));
    EXPECT_FALSE(off.isInDoubt());
}

TEST_F(SwitchedOffTest, WhatIsInDoubtCountsAsOff) {
    off.addInDoubt(1);

    EXPECT_THAT(off.displays(), ElementsAre(1));
    EXPECT_TRUE(off.isInDoubt());
}

TEST_F(SwitchedOffTest, ADoubtIsSettledByAServerThatSaysTheDisplayIsOn) {
    off.addInDoubt(1);
    server.say({{{1, true}}});

    settle();

    EXPECT_THAT(off.displays(), IsEmpty());
    EXPECT_FALSE(off.isInDoubt());
}

TEST_F(SwitchedOffTest, ADoubtIsSettledByAServerThatSaysTheDisplayIsOff) {
    off.addInDoubt(1);
    server.say({{{1, false}}});

    settle();

    EXPECT_THAT(off.displays(), ElementsAre(1));
    EXPECT_FALSE(off.isInDoubt());
}

TEST_F(SwitchedOffTest, ADoubtLastsWhileTheServerDoesNotSay) {
    off.addInDoubt(1);

    settle();

    EXPECT_THAT(off.displays(), ElementsAre(1));
    EXPECT_TRUE(off.isInDoubt());
}

TEST_F(SwitchedOffTest, ADoubtIsNotSettledByWhatTheServerSaidBeforeItFellSilent) {
    off.addInDoubt(1);
    server.say({{{1, true}}});
    server.fallSilent();

    settle();

    EXPECT_THAT(off.displays(), ElementsAre(1));
    EXPECT_TRUE(off.isInDoubt());
}

TEST_F(SwitchedOffTest, WhatIsKnownToBeOffIsNeitherPutInDoubtNorSettled) {
    off.add(1);
    off.addInDoubt(1);
    server.say({{{1, true}}});

    EXPECT_FALSE(off.isInDoubt());
    settle();

    EXPECT_THAT(off.displays(), ElementsAre(1));
}

TEST_F(SwitchedOffTest, ADisplayThatIsRemovedIsInDoubtNoLonger) {
    off.addInDoubt(1);

    off.remove(1);

    EXPECT_FALSE(off.isInDoubt());
}

}  // namespace
}  // namespace tavrel::watchdog
