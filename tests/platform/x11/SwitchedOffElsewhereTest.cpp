#include <gmock/gmock.h>

#include "tests/platform/x11/LiveServerTest.h"

namespace tavrel {
namespace {

using support::Monitor;

/// Another program switches off what was never switched off here, on a real X server.
class SwitchedOffElsewhereTest : public LiveServerTest {
protected:
    SwitchedOffElsewhereTest() {
        // Neither in the order of their numbers, nor all in their preferred mode.
        other.run({"--output", "DUMMY2", "--mode", "1280x1024", "--pos", "0x0", "--output",
                   "DUMMY0", "--mode", "1920x1080", "--pos", "1280x200", "--output", "DUMMY1",
                   "--mode", "1024x768", "--pos", "3200x0", "--primary"});
    }

    void allOn() {
        for (const char* name : {"DUMMY0", "DUMMY1", "DUMMY2"}) {
            EXPECT_EQ(server.setDisplayEnabled(idOf(name), true), serverStatus::success);
        }
    }
};

TEST_F(SwitchedOffElsewhereTest, AllComeBackAsTheyWere) {
    const std::vector<Monitor> before = desktop.monitors();
    const support::ScreenSize screen = desktop.screenSize();
    ASSERT_TRUE(server.now()->isActive(idOf("DUMMY0")));

    other.switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});
    allOn();

    EXPECT_EQ(desktop.monitors(), before);
    EXPECT_EQ(desktop.screenSize(), screen);
}

TEST_F(SwitchedOffElsewhereTest, AlsoOneAfterTheOther) {
    const std::vector<Monitor> before = desktop.monitors();

    // From the right, since xrandr moves what is left to the origin.
    for (const char* name : {"DUMMY1", "DUMMY0", "DUMMY2"}) {
        ASSERT_TRUE(server.now()->isActive(idOf(name)));
        other.switchOff(name);
    }
    allOn();

    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(SwitchedOffElsewhereTest, OneAloneComesBackToItsPlaceUnlessThatIsTaken) {
    const Monitor was = desktop.monitor("DUMMY1");
    ASSERT_TRUE(server.now()->isActive(idOf("DUMMY1")));
    other.switchOff("DUMMY1");

    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(desktop.monitor("DUMMY1"), was);

    other.switchOff("DUMMY1");
    other.setPosition("DUMMY0", 3200, 0);
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(desktop.monitor("DUMMY1").x, 5120);
}

TEST_F(SwitchedOffElsewhereTest, WhatNobodyHasEverLookedAtComesOnAtTheRight) {
    other.switchOff("DUMMY1");

    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);

    EXPECT_EQ(desktop.monitor("DUMMY1").x, 3200);
    EXPECT_EQ(desktop.monitor("DUMMY1").y, 200);
}

}  // namespace
}  // namespace tavrel
