#include "platform/gnome/GnomeWindowServer.h"

#include "tests/platform/gnome/GnomeDesktopTest.h"
#include "tests/support/SignalCount.h"

namespace tavrel {
namespace {

using testing::SizeIs;

class GnomeWindowServerTest : public GnomeDesktopTest {};

TEST_F(GnomeWindowServerTest, ListsTheMonitors) {
    const auto moment = server->now();

    EXPECT_TRUE(server->canSwitch());
    EXPECT_TRUE(moment->isCurrent());
    EXPECT_THAT(moment->allDisplays(), testing::Optional(SizeIs(3)));
    EXPECT_EQ(moment->onlineDisplays(), moment->allDisplays());
    const auto displays = moment->allDisplays().value();
    for (const DisplayID display : displays) {
        EXPECT_TRUE(moment->isOnline(display));
        EXPECT_TRUE(moment->isActive(display));
        EXPECT_FALSE(moment->isBuiltIn(display));
    }
}

TEST_F(GnomeWindowServerTest, OneGoesOffAndTheOthersCloseUp) {
    EXPECT_EQ(off(middle), serverStatus::success);

    EXPECT_FALSE(isOn(middle));
    EXPECT_EQ(desktop->screen(left).x, 0);
    EXPECT_EQ(desktop->screen(right).x, 1920);
    EXPECT_FALSE(server->now()->isActive(idOf(middle)));
    EXPECT_TRUE(server->now()->isOnline(idOf(middle)));
}

TEST_F(GnomeWindowServerTest, AllComeBackAsTheyWere) {
    for (const char* connector : {left, middle, right}) {
        ASSERT_EQ(off(connector), serverStatus::success);
        ASSERT_FALSE(isOn(connector));
        ASSERT_EQ(on(connector), serverStatus::success);
        EXPECT_EQ(desktop->screens(), atFirst) << connector;
    }
    ASSERT_EQ(off(left), serverStatus::success);
    ASSERT_EQ(off(right), serverStatus::success);
    ASSERT_EQ(on(left), serverStatus::success);
    ASSERT_EQ(on(right), serverStatus::success);
    EXPECT_EQ(desktop->screens(), atFirst);
}

TEST_F(GnomeWindowServerTest, TheScaleAndThePrimaryRoleComeBackToo) {
    auto scaled = atFirst;
    scaled[0].scale = 2;
    scaled[0].x = 1600;
    scaled[1].x = 0;
    scaled[2].x = 3520;
    desktop->apply(scaled);
    ASSERT_EQ(off(left), serverStatus::success);
    ASSERT_TRUE(desktop->screen(middle).isPrimary);

    ASSERT_EQ(on(left), serverStatus::success);

    EXPECT_EQ(desktop->screens(), scaled);
}

TEST_F(GnomeWindowServerTest, TheLastOneStays) {
    ASSERT_EQ(off(left), serverStatus::success);
    ASSERT_EQ(off(middle), serverStatus::success);

    EXPECT_EQ(off(right), serverStatus::cannotComplete);

    EXPECT_TRUE(isOn(right));
}

TEST_F(GnomeWindowServerTest, ADisplayThatIsNotThereIsNotFound) {
    EXPECT_EQ(server->setDisplayEnabled(1, true), serverStatus::illegalArgument);
    EXPECT_EQ(server->setDisplayEnabled(1, false), serverStatus::illegalArgument);
}

TEST_F(GnomeWindowServerTest, WhatIsAsItShouldBeStaysSo) {
    EXPECT_EQ(on(left), serverStatus::success);
    ASSERT_EQ(off(left), serverStatus::success);
    EXPECT_EQ(off(left), serverStatus::success);
    EXPECT_FALSE(isOn(left));
}

TEST_F(GnomeWindowServerTest, WhatAnotherProgramSwitchedOffComesBackAsItWas) {
    server->now();
    auto one = atFirst;
    one[0].isOn = one[2].isOn = false;
    one[1].x = 0;
    one[1].isPrimary = true;
    desktop->apply(one);
    server->now();

    EXPECT_EQ(on(right), serverStatus::success);
    EXPECT_EQ(on(left), serverStatus::success);

    EXPECT_EQ(desktop->screens(), atFirst);
}

TEST_F(GnomeWindowServerTest, WhatAnotherProgramHasMovedStaysThere) {
    ASSERT_EQ(off(middle), serverStatus::success);
    auto below = desktop->screens();
    below[2].x = 0;
    below[2].y = 1080;
    desktop->apply(below);

    EXPECT_EQ(on(middle), serverStatus::success);

    EXPECT_EQ(desktop->screen(right).y, 1080);
    EXPECT_EQ(desktop->screen(middle).x, 1920);
}

TEST_F(GnomeWindowServerTest, AnotherRunBringsItBackAsItWas) {
    ASSERT_EQ(off(left), serverStatus::success);

    server = std::make_unique<GnomeWindowServer>(store, options());
    ASSERT_EQ(on(left), serverStatus::success);

    EXPECT_EQ(desktop->screens(), atFirst);
}

TEST_F(GnomeWindowServerTest, AMonitorThatWasKnownAtAnotherConnectorIsTheSameDisplay) {
    const DisplayID before = idOf(middle);
    // As an earlier run has stored it, that met the monitor at another port.
    auto known = layout::MonitorDirectory(store).all();
    for (layout::KnownMonitor& each : known) {
        if (each.display == before) {
            each.display = 4711;
            each.identity.connector = "DP-7";
        }
    }
    SimulatedUserDefaults storeOfThatRun;
    storeOfThatRun.setData(layout::knownMonitorsKey, layout::encodeMonitors(known));

    GnomeWindowServer later(storeOfThatRun, options());

    EXPECT_TRUE(later.now()->isActive(4711));
    EXPECT_EQ(later.now()->hardware(4711).connector, middle);
    ASSERT_EQ(later.setDisplayEnabled(4711, false), serverStatus::success);
    EXPECT_FALSE(isOn(middle));
}

TEST_F(GnomeWindowServerTest, ASilentCompositorIsAnsweredForAndDoesItLater) {
    server = std::make_unique<GnomeWindowServer>(
        store, GnomeOptions{desktop->busAddress(), std::chrono::milliseconds(500)});
    const DisplayID display = idOf(middle);
    desktop->pause();

    EXPECT_TRUE(server->now()->isActive(display));
    EXPECT_FALSE(server->now()->isCurrent());
    EXPECT_EQ(server->setDisplayEnabled(display, false), serverStatus::notImplemented);

    desktop->resume();
    EXPECT_TRUE(support::waitUntil([&] { return server->now()->isCurrent(); }));
    EXPECT_TRUE(support::waitUntil(
        [&] { return server->setDisplayEnabled(display, false) == serverStatus::success; }));
    EXPECT_FALSE(isOn(middle));
}

TEST_F(GnomeWindowServerTest, ACompositorThatEndsIsGoneAndServedAgainWhenItIsBack) {
    const DisplayID display = idOf(middle);
    ASSERT_EQ(off(middle), serverStatus::success);

    desktop->kill();
    EXPECT_TRUE(support::waitUntil([&] { return !server->canSwitch(); }));
    EXPECT_EQ(server->now()->allDisplays(), std::nullopt);
    EXPECT_EQ(server->setDisplayEnabled(display, true), serverStatus::notImplemented);

    desktop->start();
    EXPECT_TRUE(support::waitUntil([&] { return server->canSwitch(); }));
    EXPECT_EQ(server->setDisplayEnabled(display, false), serverStatus::success);
    EXPECT_FALSE(isOn(middle));
}

/// A laptop's lid is closed or opened. Mutter then looks for a layout anew, and takes the one it
/// had before the current one if that was only temporary.
class GnomeLidTest : public GnomeDesktopTest {
protected:
    GnomeLidTest() { hasLid = true; }

    /// Returns once mutter has looked for a layout.
    void moveLid(bool isClosed) {
        const support::SignalCount looks(desktop->busAddress(), "org.gnome.Mutter.DisplayConfig",
                                         "MonitorsChanged");
        desktop->setLidClosed(isClosed);
        ASSERT_TRUE(support::waitUntil([&] { return looks.count() > 0; }));
    }
};

TEST_F(GnomeLidTest, WhatIsOffStaysOffWhenItIsClosedAndOpened) {
    ASSERT_EQ(off(middle), serverStatus::success);
    const auto before = desktop->screens();

    moveLid(true);
    EXPECT_EQ(desktop->screens(), before);

    moveLid(false);
    EXPECT_EQ(desktop->screens(), before);
}

TEST_F(GnomeLidTest, WhatIsOnAgainStaysOnWhenItIsClosedAndOpened) {
    ASSERT_EQ(off(middle), serverStatus::success);
    ASSERT_EQ(on(middle), serverStatus::success);

    moveLid(true);
    EXPECT_EQ(desktop->screens(), atFirst);

    moveLid(false);
    EXPECT_EQ(desktop->screens(), atFirst);
}

}  // namespace
}  // namespace tavrel
