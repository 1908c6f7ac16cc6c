#include <gmock/gmock.h>

#include <ctime>
#include <optional>
#include <string>

#include "tests/scenario/AccessibleReading.h"
#include "tests/support/AccessibilityBus.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppProcess.h"
#include "tests/support/GnomeDesktop.h"
#include "tests/support/Monitor.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/Xwayland.h"

/// The built application where all it is told of the desktop is the X server that a Wayland
/// compositor has for old programs. That one's outputs look like monitors, and can't be switched.
namespace tavrel::e2e {
namespace {

using support::waitUntil;

class XwaylandTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::GnomeDesktop::isInstalled() || !support::Xwayland::isInstalled()) {
            GTEST_SKIP() << "mutter or Xwayland is not installed";
        }
        desktop.emplace();
        xServer.emplace(desktop->displayName());
    }

    /// The compositor is on another message bus than the one that the application is told of.
    void startApplication() {
        accessibility.emplace(home.path(), xServer->displayName(), home.janitor());
        application.emplace(
            home, support::AppProcess::Options{
                      .program = TAVREL_PROGRAM,
                      .environment = {{"DISPLAY", xServer->displayName()},
                                      {"DBUS_SESSION_BUS_ADDRESS", accessibility->sessionAddress()},
                                      {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}}});
        accessible.emplace(accessibility->accessibilityAddress(), application->pid());
    }
    void rememberTwoDisplays() {
        constexpr std::time_t referenceDate = 978'307'200;
        const std::string lastSeen = R"(,\"isBuiltIn\":false,\"lastSeenAt\":)" +
                                     std::to_string(std::time(nullptr) - referenceDate) + "}";
        home.plantDefaults(R"({"TavrelKnownDisplays":"[{\"id\":7)" + lastSeen + R"(,{\"id\":8)" +
                           lastSeen + R"(]"})");
    }
    scenario::Window window() { return scenario::readWindow(accessible->elements()); }

    std::optional<support::GnomeDesktop> desktop;
    std::optional<support::Xwayland> xServer;
    support::UserHome home;
    std::optional<support::AccessibilityBus> accessibility;
    std::optional<support::AppProcess> application;
    std::optional<support::AccessibleWindow> accessible;
};

TEST_F(XwaylandTest, ItsOutputsAreNotListedAndWhatIsRememberedCannotBeSwitched) {
    ASSERT_THAT(support::readMonitors(xServer->displayName()), testing::SizeIs(3))
        << "there is something to be taken for monitors";
    rememberTwoDisplays();
    startApplication();
    ASSERT_TRUE(waitUntil([&] { return window().rows.size() == 2; })) << window();

    ASSERT_TRUE(accessible->actOn([&] { return scenario::findSwitch(accessible->elements(), 0); }));

    EXPECT_TRUE(waitUntil([&] {
        return window().footer ==
               "This desktop session doesn’t expose display enable/disable control";
    })) << window();
    EXPECT_THAT(window().rows, testing::SizeIs(2));
    EXPECT_TRUE(window().rows[0].isOn);
}

}  // namespace
}  // namespace tavrel::e2e
