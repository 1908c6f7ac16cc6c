#include "platform/x11/X11WindowServer.h"

#include <gmock/gmock.h>

#include "platform/layout/LayoutMoment.h"
#include "platform/layout/RememberedOutputs.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using support::Monitor;
using support::ScreenSize;
using testing::UnorderedElementsAre;

class X11WindowServerTest : public LiveServerTest {};

TEST_F(X11WindowServerTest, ListsEveryConnectedOutput) {
    EXPECT_TRUE(server.canSwitch());
    EXPECT_THAT(displayList(),
                UnorderedElementsAre(idOf("DUMMY0"), idOf("DUMMY1"), idOf("DUMMY2")));

    EXPECT_EQ(server.now()->onlineDisplays(), displayList());
}

TEST_F(X11WindowServerTest, AMomentIsOneLookAtTheServer) {
    const auto moment = server.now();

    other.switchOff("DUMMY1");
    EXPECT_TRUE(moment->isActive(idOf("DUMMY1"))) << "still what was so then";
    EXPECT_FALSE(server.now()->isActive(idOf("DUMMY1")));

    desktop.kill();
    EXPECT_THAT(moment->allDisplays(), testing::Optional(testing::SizeIs(3)));
    EXPECT_TRUE(moment->isOnline(idOf("DUMMY2"))) << "without asking again";
}

TEST_F(X11WindowServerTest, LatelyMayBeAMomentAgoButNotWhenNothingShowed) {
    const auto showedAnything = [&] { return layout::showsAnything(*server.lately()); };
    ASSERT_TRUE(showedAnything());
    other.switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});
    ASSERT_TRUE(support::waitUntil([&] { return !showedAnything(); }));

    other.switchOn("DUMMY1");

    EXPECT_TRUE(showedAnything()) << "at once";
}

TEST_F(X11WindowServerTest, KnowsAMonitorAndNoOther) {
    const DisplayID known = idOf("DUMMY1");
    EXPECT_TRUE(server.now()->isOnline(known));
    EXPECT_TRUE(server.now()->isActive(known));
    EXPECT_FALSE(server.now()->isBuiltIn(known));
    for (const DisplayID stranger : {DisplayID{0}, DisplayID{12345}, idOf("DUMMY3")}) {
        EXPECT_FALSE(server.now()->isOnline(stranger));
        EXPECT_FALSE(server.now()->isActive(stranger));
        EXPECT_FALSE(server.now()->isBuiltIn(stranger));
        EXPECT_EQ(server.now()->vendorNumber(stranger), 0U);
        EXPECT_EQ(server.now()->modelNumber(stranger), 0U);
        EXPECT_EQ(server.now()->serialNumber(stranger), 0U);
        EXPECT_EQ(server.setDisplayEnabled(stranger, false), serverStatus::illegalArgument);
        EXPECT_EQ(server.setDisplayEnabled(stranger, true), serverStatus::illegalArgument);
    }
}

TEST_F(X11WindowServerTest, SwitchesOffAndLeavesTheRestWhereItIs) {
    const Monitor left = desktop.monitor("DUMMY0");
    const Monitor right = desktop.monitor("DUMMY2");
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);

    EXPECT_FALSE(server.now()->isActive(idOf("DUMMY1")));
    EXPECT_TRUE(server.now()->isOnline(idOf("DUMMY1")));
    EXPECT_EQ(displayList().size(), 3U);
    EXPECT_FALSE(desktop.monitor("DUMMY1").on);
    EXPECT_EQ(desktop.monitor("DUMMY0"), left);
    EXPECT_EQ(desktop.monitor("DUMMY2"), right);
}

TEST_F(X11WindowServerTest, SwitchesOnExactlyAsItWas) {
    for (const char* mode : {"1920x1080", "1280x1024"}) {
        other.setMode("DUMMY1", mode);
        const std::vector<Monitor> before = desktop.monitors();
        for (const char* name : {"DUMMY0", "DUMMY1", "DUMMY2"}) {
            const ScreenSize screen = desktop.screenSize();
            ASSERT_EQ(server.setDisplayEnabled(idOf(name), false), serverStatus::success);
            EXPECT_FALSE(desktop.monitor(name).on);
            ASSERT_EQ(server.setDisplayEnabled(idOf(name), true), serverStatus::success);
            EXPECT_TRUE(server.now()->isActive(idOf(name)));
            EXPECT_EQ(desktop.monitors(), before);
            EXPECT_EQ(desktop.screenSize(), screen);
        }
    }
}

TEST_F(X11WindowServerTest, HandsOnThePrimaryRoleAndGivesItBack) {
    ASSERT_TRUE(desktop.monitor("DUMMY0").primary);
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY0"), false), serverStatus::success);
    EXPECT_TRUE(desktop.monitor("DUMMY1").primary);
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY0"), true), serverStatus::success);
    EXPECT_TRUE(desktop.monitor("DUMMY0").primary);
}

TEST_F(X11WindowServerTest, GrowsAndShrinksTheScreenWithWhatIsOn) {
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY2"), false), serverStatus::success);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{3840, 1080}));
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{1920, 1080}));
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY2"), true), serverStatus::success);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{5760, 1080}));
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{5760, 1080}));
}

TEST_F(X11WindowServerTest, RefusesToSwitchOffTheLast) {
    for (const char* name : {"DUMMY1", "DUMMY0"}) {
        ASSERT_EQ(server.setDisplayEnabled(idOf(name), false), serverStatus::success);
    }
    const std::vector<Monitor> before = desktop.monitors();
    const auto stored = store.data(layout::rememberedOutputsKey);

    EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY2"), false), serverStatus::cannotComplete);

    EXPECT_TRUE(desktop.monitor("DUMMY2").on);
    EXPECT_EQ(desktop.monitors(), before);
    EXPECT_EQ(store.data(layout::rememberedOutputsKey), stored);
}

TEST_F(X11WindowServerTest, SwitchesAllOnAgainWithTheLastGoneFromOutside) {
    const std::vector<Monitor> before = desktop.monitors();
    for (const char* name : {"DUMMY1", "DUMMY0"}) {
        ASSERT_EQ(server.setDisplayEnabled(idOf(name), false), serverStatus::success);
    }
    other.switchOff("DUMMY2");

    for (const char* name : {"DUMMY0", "DUMMY1", "DUMMY2"}) {
        ASSERT_EQ(server.setDisplayEnabled(idOf(name), true), serverStatus::success);
    }

    EXPECT_EQ(desktop.monitors(), before);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{5760, 1080}));
}

TEST_F(X11WindowServerTest, AMirrorGoesAndComesBackWithoutTheOther) {
    other.showSameAs("DUMMY2", "DUMMY0");
    const std::vector<Monitor> before = desktop.monitors();
    const Monitor original = desktop.monitor("DUMMY0");
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY2"), false), serverStatus::success);
    EXPECT_EQ(desktop.monitor("DUMMY0"), original);
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY2"), true), serverStatus::success);
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(X11WindowServerTest, GoesToTheRightWhenItsPlaceIsTaken) {
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);
    other.setPosition("DUMMY2", 1920, 0);
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(desktop.monitor("DUMMY1").x, 3840);
    EXPECT_EQ(desktop.monitor("DUMMY2").x, 1920);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{5760, 1080}));
}

TEST_F(X11WindowServerTest, NothingHappensToWhatIsAsItShouldBe) {
    const std::vector<Monitor> before = desktop.monitors();
    EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(desktop.monitors(), before);
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);
    const auto stored = store.data(layout::rememberedOutputsKey);
    EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);
    EXPECT_EQ(store.data(layout::rememberedOutputsKey), stored);
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(X11WindowServerTest, RefusesAPlaceOutsideTheServersLimits) {
    // A screen ends at 32767; the rightmost monitor leaves no room for another.
    other.run({"--output", "DUMMY1", "--off", "--output", "DUMMY0", "--mode", "640x480", "--output",
               "DUMMY2", "--mode", "640x480", "--pos", "32000x0"});
    const std::vector<Monitor> before = desktop.monitors();
    ASSERT_EQ(desktop.screenSize(), (ScreenSize{32640, 480}));
    EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::cannotComplete);
    EXPECT_EQ(desktop.monitors(), before);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{32640, 480}));
}

TEST_F(X11WindowServerTest, AScreenTheServerHasNoMemoryForIsARefusalThatChangesNothing) {
    other.run({"--output", "DUMMY1", "--off", "--output", "DUMMY2", "--pos", "28000x0"});
    const std::vector<Monitor> before = desktop.monitors();
    ASSERT_EQ(desktop.screenSize(), (ScreenSize{29920, 1080}));
    EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::cannotComplete);
    EXPECT_EQ(desktop.monitors(), before);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{29920, 1080}));
    // And the server is free for others.
    other.setPosition("DUMMY2", 1920, 0);
    EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
}

TEST_F(X11WindowServerTest, AnotherRunRestoresWhatThisOneSwitchedOff) {
    other.setMode("DUMMY1", "1280x1024");
    const std::vector<Monitor> before = desktop.monitors();
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);
    X11WindowServer nextRun(store, {.displayName = desktop.displayName()});
    ASSERT_EQ(nextRun.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(X11WindowServerTest, ANewServerGetsBackWhatAnEarlierOneHad) {
    other.run({"--output", "DUMMY1", "--mode", "1280x1024", "--pos", "1920x56"});
    const Monitor was = desktop.monitor("DUMMY1");
    ASSERT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);

    const support::VirtualDesktop later;
    later.otherClient().switchOff("DUMMY1");
    X11WindowServer laterServer(store, {.displayName = later.displayName()});
    ASSERT_EQ(laterServer.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);
    EXPECT_EQ(later.monitor("DUMMY1"), was);
}

}  // namespace
}  // namespace tavrel
