#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "platform/dbus/PortalHotKeys.h"
#include "tests/platform/x11/hotkeys/ManualMainQueue.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/MessageBus.h"
#include "tests/support/ShortcutsBackend.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WakeChord.h"

/// The portal that desktops have, in front of a desktop that a test plays.
namespace tavrel {
namespace {

std::string portalProgram() {
    for (const char* path :
         {"/usr/libexec/xdg-desktop-portal", "/usr/lib/xdg-desktop-portal/xdg-desktop-portal"}) {
        if (std::filesystem::exists(path)) {
            return path;
        }
    }
    throw std::runtime_error("xdg-desktop-portal is not installed");
}

class RealPortalTest : public testing::Test {
protected:
    RealPortalTest() {
        // Where the one or the other version looks for what is behind it.
        support::writeFile(folder.path() / "portals/stub.portal",
                           std::string("[portal]\nDBusName=") + support::ShortcutsBackend::name +
                               "\nInterfaces=" + support::ShortcutsBackend::interface +
                               ";\nUseIn=stub\n");
        support::writeFile(folder.path() / "portals/portals.conf", "[preferred]\ndefault=stub\n");
        support::writeFile(folder.path() / "config/xdg-desktop-portal/portals.conf",
                           "[preferred]\ndefault=stub\n");
    }

    void startPortal() {
        support::ChildProcess::Options options;
        options.command = {portalProgram()};
        options.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        options.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nowhere";
        options.environment["XDG_DESKTOP_PORTAL_DIR"] = folder.path() / "portals";
        options.environment["XDG_CURRENT_DESKTOP"] = "stub";
        options.environment["XDG_CONFIG_HOME"] = folder.path() / "config";
        options.environment["XDG_RUNTIME_DIR"] = folder.path();
        options.environment["HOME"] = folder.path();
        options.environment["GSETTINGS_BACKEND"] = "memory";
        options.standardError = folder.path() / "portal.err";
        portal = std::make_unique<support::ChildProcess>(options);
        janitor.watchGroup(portal->pid());
    }

    std::string portalsWords() const { return support::readFile(folder.path() / "portal.err"); }

    bool isBoundTo(const std::string& trigger) {
        return mainQueue.runUntil([&] { return hotKeys.boundTo() == trigger; });
    }

    support::TemporaryFolder folder;
    support::Janitor janitor{folder.path()};
    support::MessageBus bus{folder.path(), "session", janitor};
    support::ShortcutsBackend backend{bus.address()};
    std::unique_ptr<support::ChildProcess> portal;
    ManualMainQueue mainQueue;
    PortalHotKeys hotKeys{mainQueue, {bus.address(), "org.example.App", "Wakes"}};
};

TEST_F(RealPortalTest, PassesWishesAnswersAndPressesOnAlsoAfterItWasStartedAnew) {
    int presses = 0;
    const auto handler = hotKeys.installEventHandler([&] { ++presses; });
    startPortal();
    const auto chord = hotKeys.registerHotKey(support::wakeChord);
    ASSERT_TRUE(isBoundTo("Super+F9")) << portalsWords();
    EXPECT_THAT(backend.bound(), testing::ElementsAre("wake CTRL+ALT+LOGO+w"));

    backend.press();
    EXPECT_TRUE(mainQueue.runUntil([&] { return presses == 1; }));
    backend.rebind("Super+F10");
    EXPECT_TRUE(isBoundTo("Super+F10"));

    portal.reset();
    EXPECT_TRUE(mainQueue.runUntil([&] { return !hotKeys.isHeld(); }));
    startPortal();
    EXPECT_TRUE(isBoundTo("Super+F9")) << portalsWords();
    backend.press();
    EXPECT_TRUE(mainQueue.runUntil([&] { return presses == 2; }));
}

}  // namespace
}  // namespace tavrel
