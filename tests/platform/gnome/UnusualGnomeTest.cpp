#include "tests/platform/gnome/StandInGnomeTest.h"

#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using Answer = StandInGnome::Answer;
using testing::IsEmpty;

using UnusualGnomeTest = StandInGnomeTest;

TEST_F(UnusualGnomeTest, IsSwitchedAsAnyOther) {
    const auto atFirst = gnome.state().logicalMonitors;
    const DisplayID middle = idAt("DP-2");

    ASSERT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
    EXPECT_FALSE(gnome.isOn("DP-2"));
    ASSERT_EQ(server.setDisplayEnabled(middle, true), serverStatus::success);

    EXPECT_THAT(gnome.state().logicalMonitors, testing::UnorderedElementsAreArray(atFirst));
}

TEST_F(UnusualGnomeTest, AnErrorInPlaceOfAChangeIsARefusalAndAllIsAsBefore) {
    const DisplayID middle = idAt("DP-2");
    gnome.answerNext({Answer::fail});

    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::cannotComplete);

    EXPECT_TRUE(gnome.isOn("DP-2"));
    EXPECT_THAT(remembered(), IsEmpty());
}

TEST_F(UnusualGnomeTest, AnErrorInPlaceOfItsStateSaysNothingOfItsDisplays) {
    const DisplayID middle = idAt("DP-2");
    gnome.refuseToTell(true);

    EXPECT_FALSE(server.now()->isCurrent());
    EXPECT_TRUE(server.now()->isActive(middle)) << "what it said last holds";
    EXPECT_TRUE(server.canSwitch());
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::cannotComplete);
    EXPECT_TRUE(gnome.isOn("DP-2"));

    gnome.refuseToTell(false);
    EXPECT_TRUE(support::waitUntil([&] { return server.now()->isCurrent(); }));
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
}

TEST_F(UnusualGnomeTest, HardwareThatChangesMeanwhileIsReadAgain) {
    const DisplayID middle = idAt("DP-2");
    gnome.answerNext({Answer::deny, Answer::deny});

    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);

    EXPECT_FALSE(gnome.isOn("DP-2"));
}

TEST_F(UnusualGnomeTest, ThatSaysDoneAndHasDoneNothingIsAskedAgain) {
    const DisplayID middle = idAt("DP-2");
    gnome.answerNext({Answer::ignore});
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
    EXPECT_FALSE(gnome.isOn("DP-2"));

    gnome.answerNext(std::vector<Answer>(100, Answer::ignore));
    EXPECT_EQ(server.setDisplayEnabled(middle, true), serverStatus::cannotComplete);
    EXPECT_FALSE(gnome.isOn("DP-2"));
}

TEST_F(UnusualGnomeTest, WhatIsUnpluggedIsNotThereAndCanNotComeOn) {
    const DisplayID middle = idAt("DP-2");
    ASSERT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);

    gnome.unplug("DP-2");

    EXPECT_FALSE(server.now()->isOnline(middle));
    EXPECT_EQ(server.setDisplayEnabled(middle, true), serverStatus::illegalArgument);
    EXPECT_THAT(remembered(), testing::SizeIs(1)) << "it may come back";
}

}  // namespace
}  // namespace tavrel
