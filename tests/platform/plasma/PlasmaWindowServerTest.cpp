#include "platform/plasma/PlasmaWindowServer.h"

#include <stdexcept>

#include "tests/platform/plasma/LivePlasmaTest.h"

namespace tavrel {
namespace {

using support::PlasmaDesktop;
using testing::Optional;
using testing::UnorderedElementsAre;

using PlasmaWindowServerTest = LivePlasmaTest;

TEST_F(PlasmaWindowServerTest, ListsEveryOutputOnOrOff) {
    ASSERT_EQ(server->setDisplayEnabled(middle, false), serverStatus::success);

    const auto moment = server->now();

    EXPECT_TRUE(server->canSwitch());
    EXPECT_TRUE(moment->isCurrent());
    EXPECT_THAT(moment->allDisplays(), Optional(UnorderedElementsAre(left, middle, right)));
    EXPECT_THAT(moment->onlineDisplays(), Optional(UnorderedElementsAre(left, middle, right)));
    EXPECT_TRUE(moment->isOnline(middle));
    EXPECT_FALSE(moment->isActive(middle));
    EXPECT_TRUE(moment->isActive(left));
    EXPECT_FALSE(moment->isBuiltIn(left));
}

TEST_F(PlasmaWindowServerTest, BringsADisplayBackAsItWas) {
    changeElsewhere(middle, [](auto& shown) {
        shown->scale = 1.5;
        shown->area.width = 683;
        shown->area.height = 512;
        shown->rotation = layout::rotate0;
    });
    changeElsewhere(right, [](auto& shown) { shown->area.x = 1024 + 683; });
    const std::vector<PlasmaDesktop::Screen> atFirst = desktop->screens();

    ASSERT_EQ(server->setDisplayEnabled(middle, false), serverStatus::success);
    EXPECT_FALSE(desktop->screen("Virtual-1").isOn);
    ASSERT_EQ(server->setDisplayEnabled(middle, true), serverStatus::success);

    EXPECT_EQ(desktop->screens(), atFirst);
}

TEST_F(PlasmaWindowServerTest, GivesThePrimaryRoleBack) {
    const layout::Layout atFirst = layout();
    ASSERT_EQ(atFirst.primary, left);

    ASSERT_EQ(server->setDisplayEnabled(left, false), serverStatus::success);
    const auto primaryMeanwhile = layout().primary;
    ASSERT_EQ(server->setDisplayEnabled(left, true), serverStatus::success);

    EXPECT_EQ(primaryMeanwhile, middle);
    EXPECT_EQ(layout().primary, left);
}

TEST_F(PlasmaWindowServerTest, BringsATurnedDisplayBackTurned) {
    changeElsewhere(right, [](auto& shown) {
        shown->rotation = layout::rotate90;
        std::swap(shown->area.width, shown->area.height);
    });
    ASSERT_EQ(desktop->screen("Virtual-2").geometry, "2048,0,768x1024");

    ASSERT_EQ(server->setDisplayEnabled(right, false), serverStatus::success);
    ASSERT_EQ(server->setDisplayEnabled(right, true), serverStatus::success);

    EXPECT_EQ(desktop->screen("Virtual-2").geometry, "2048,0,768x1024");
    EXPECT_EQ(layout().output(right)->shown->rotation, layout::rotate90);
}

TEST_F(PlasmaWindowServerTest, PutsNoDisplayOnAnother) {
    for (const DisplayID display : {left, middle, right}) {
        ASSERT_EQ(server->setDisplayEnabled(display, false), serverStatus::success);
        const layout::Layout without = layout();
        ASSERT_EQ(server->setDisplayEnabled(display, true), serverStatus::success);
        const layout::Layout with = layout();

        for (const layout::Layout& each : {without, with}) {
            for (const layout::Output& one : each.outputs) {
                for (const layout::Output& other : each.outputs) {
                    EXPECT_FALSE(one.display < other.display && one.isActive() &&
                                 other.isActive() && overlap(one.shown->area, other.shown->area));
                }
            }
        }
    }
}

TEST_F(PlasmaWindowServerTest, KeepsTheLastDisplayOn) {
    ASSERT_EQ(server->setDisplayEnabled(left, false), serverStatus::success);
    ASSERT_EQ(server->setDisplayEnabled(middle, false), serverStatus::success);

    EXPECT_EQ(server->setDisplayEnabled(right, false), serverStatus::cannotComplete);

    EXPECT_TRUE(desktop->screen("Virtual-2").isOn);
}

TEST_F(PlasmaWindowServerTest, BringsBackAllThatWasOffInAnyOrder) {
    const std::vector<PlasmaDesktop::Screen> atFirst = desktop->screens();
    ASSERT_EQ(server->setDisplayEnabled(left, false), serverStatus::success);
    ASSERT_EQ(server->setDisplayEnabled(middle, false), serverStatus::success);

    ASSERT_EQ(server->setDisplayEnabled(left, true), serverStatus::success);
    ASSERT_EQ(server->setDisplayEnabled(middle, true), serverStatus::success);

    EXPECT_EQ(desktop->screens(), atFirst);
    EXPECT_EQ(layout().primary, left);
}

TEST_F(PlasmaWindowServerTest, BringsWhatAnotherProgramSwitchedOffBackAsItWas) {
    const std::vector<PlasmaDesktop::Screen> atFirst = desktop->screens();
    ASSERT_TRUE(isActive(middle));
    switchOffElsewhere(middle);
    ASSERT_FALSE(isActive(middle));

    ASSERT_EQ(server->setDisplayEnabled(middle, true), serverStatus::success);

    EXPECT_EQ(desktop->screens(), atFirst);
}

TEST_F(PlasmaWindowServerTest, LeavesAloneWhatIsAsItShouldBe) {
    const std::size_t writes = store.writes();

    EXPECT_EQ(server->setDisplayEnabled(middle, true), serverStatus::success);

    EXPECT_EQ(store.writes(), writes);
}

TEST_F(PlasmaWindowServerTest, DoesNotKnowEveryNumber) {
    EXPECT_EQ(server->setDisplayEnabled(1, false), serverStatus::illegalArgument);
    EXPECT_EQ(server->setDisplayEnabled(1, true), serverStatus::illegalArgument);
    EXPECT_FALSE(server->now()->isOnline(1));
}

TEST_F(PlasmaWindowServerTest, IsThereAgainAfterTheServerWas) {
    const std::vector<PlasmaDesktop::Screen> atFirst = desktop->screens();
    ASSERT_EQ(server->setDisplayEnabled(middle, false), serverStatus::success);

    desktop->kill();
    EXPECT_TRUE(support::waitUntil([&] { return !server->canSwitch(); }));
    EXPECT_EQ(server->setDisplayEnabled(middle, true), serverStatus::notImplemented);
    EXPECT_EQ(server->now()->onlineDisplays(), std::nullopt);
    desktop->start();

    EXPECT_TRUE(support::waitUntil([&] { return server->now()->isOnline(middle); }));
    EXPECT_TRUE(support::waitUntil(
        [&] { return server->setDisplayEnabled(middle, true) == serverStatus::success; }));
    EXPECT_EQ(desktop->screens(), atFirst);
}

TEST_F(PlasmaWindowServerTest, IsRecognised) {
    EXPECT_TRUE(isPlasmaOffered(desktop->displayName()));
    desktop->kill();
    EXPECT_FALSE(isPlasmaOffered(desktop->displayName()));
}

TEST(NoPlasmaTest, IsAStatus) {
    for (const char* name : {"", "nonsense", "/nowhere/wayland-0"}) {
        SimulatedUserDefaults store;
        PlasmaWindowServer server(store, {.displayName = name});
        EXPECT_FALSE(isPlasmaOffered(name));
        EXPECT_FALSE(server.canSwitch());
        EXPECT_EQ(server.setDisplayEnabled(1, true), serverStatus::notImplemented);
        EXPECT_EQ(server.now()->allDisplays(), std::nullopt);
        EXPECT_TRUE(server.now()->isCurrent());
    }
}

}  // namespace
}  // namespace tavrel
