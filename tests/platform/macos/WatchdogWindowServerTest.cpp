#include "tests/platform/macos/MacFixture.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {
namespace {

using simulatedMac::takeCalls;
using testing::ElementsAre;

using WatchdogWindowServerTest = MacFixture;

TEST_F(WatchdogWindowServerTest, AsksForTheOnlineListWhenItIsMadeAndBeforeEachChange) {
    const WindowServer server = makeWindowServer({});
    EXPECT_THAT(takeCalls(), ElementsAre("CGGetOnlineDisplayList(0)", "CGGetOnlineDisplayList(3)"));

    EXPECT_EQ(server.displaySwitch->setDisplayEnabled(monitor, true), 0);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGGetOnlineDisplayList(0)", "CGGetOnlineDisplayList(3)",
                            "CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(2, 1)",
                            "CGCompleteDisplayConfiguration(2)"));
}

TEST_F(WatchdogWindowServerTest, KeepsTheLastDisplayOnByItself) {
    const WindowServer server = makeWindowServer({});
    EXPECT_EQ(server.displaySwitch->setDisplayEnabled(monitor, false), 0);
    EXPECT_EQ(server.displaySwitch->setDisplayEnabled(panel, false), 0);

    EXPECT_EQ(server.displaySwitch->setDisplayEnabled(other, false), 1004);

    EXPECT_TRUE(isOn(mac, other));
}

TEST_F(WatchdogWindowServerTest, AnswersQuestionsAboutTheDisplaysItSwitches) {
    const WindowServer server = makeWindowServer({});

    server.displaySwitch->setDisplayEnabled(monitor, false);

    EXPECT_FALSE(server.queries->now()->isActive(monitor));
    EXPECT_TRUE(server.queries->now()->isActive(other));
}

}  // namespace
}  // namespace tavrel::watchdog
