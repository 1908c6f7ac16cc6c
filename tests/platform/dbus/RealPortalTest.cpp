#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "platform/dbus/PortalHotKeys.h"
#include "tests/platform/x11/hotkeys/ManualMainQueue.h"
#include "tests/support/MessageBus.h"
#include "tests/support/RealPortal.h"
#include "tests/support/ShortcutsBackend.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WakeChord.h"

/// The portal that desktops have, in front of a desktop that a test plays.
namespace tavrel {
namespace {

class RealPortalTest : public testing::Test {
protected:
    void startPortal() { portal.emplace(bus.address()); }

    bool isBoundTo(const std::string& trigger) {
        return mainQueue.runUntil([&] { return hotKeys.boundTo() == trigger; });
    }

    support::TemporaryFolder folder;
    support::Janitor janitor{folder.path()};
    support::MessageBus bus{folder.path(), "session", janitor};
    support::ShortcutsBackend backend{bus.address()};
    std::optional<support::RealPortal> portal;
    ManualMainQueue mainQueue;
    PortalHotKeys hotKeys{mainQueue, {bus.address(), "org.example.App", "Wakes"}};
};

TEST_F(RealPortalTest, PassesWishesAnswersAndPressesOnAlsoAfterItWasStartedAnew) {
    int presses = 0;
    const auto handler = hotKeys.installEventHandler([&] { ++presses; });
    startPortal();
    const auto chord = hotKeys.registerHotKey(support::wakeChord);
    ASSERT_TRUE(isBoundTo("Super+F9")) << portal->complaints();
    EXPECT_THAT(backend.bound(), testing::ElementsAre("wake CTRL+ALT+LOGO+w"));

    backend.press();
    EXPECT_TRUE(mainQueue.runUntil([&] { return presses == 1; }));
    backend.rebind("Super+F10");
    EXPECT_TRUE(isBoundTo("Super+F10"));

    portal.reset();
    EXPECT_TRUE(mainQueue.runUntil([&] { return !hotKeys.isHeld(); }));
    startPortal();
    EXPECT_TRUE(isBoundTo("Super+F9")) << portal->complaints();
    backend.press();
    EXPECT_TRUE(mainQueue.runUntil([&] { return presses == 2; }));
}

}  // namespace
}  // namespace tavrel
