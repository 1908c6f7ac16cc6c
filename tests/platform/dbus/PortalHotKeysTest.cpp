#include "platform/dbus/PortalHotKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "tests/platform/x11/hotkeys/ManualMainQueue.h"
#include "tests/support/MessageBus.h"
#include "tests/support/ShortcutsPortal.h"
#include "tests/support/SilentSocket.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WakeChord.h"

namespace tavrel {
namespace {

using support::ShortcutsPortal;
using testing::ElementsAre;
using testing::SizeIs;

class PortalHotKeysTest : public testing::Test {
protected:
    void startBus() { bus.emplace(folder.path(), "session", janitor); }

    void claim() {
        handler = hotKeys.installEventHandler([this] { ++presses; });
        observer = hotKeys.observeHeld([this] { ++changes; });
        chord = hotKeys.registerHotKey(support::wakeChord);
        ASSERT_NE(chord, nullptr);
    }

    bool becomes(const std::function<bool()>& condition) { return mainQueue.runUntil(condition); }

    bool isBoundTo(const std::string& trigger) {
        return becomes([&] { return hotKeys.isHeld() && hotKeys.boundTo() == trigger; });
    }

    bool isLost() {
        return becomes([&] { return !hotKeys.isHeld(); });
    }

    support::TemporaryFolder folder;
    support::Janitor janitor{folder.path()};
    const std::string address = "unix:path=" + (folder.path() / "session").string();
    std::optional<support::MessageBus> bus;
    std::optional<ShortcutsPortal> portal;
    ManualMainQueue mainQueue;
    PortalHotKeys hotKeys{mainQueue, {address, "org.example.App", "Wakes"}};
    int presses = 0;
    int changes = 0;
    std::unique_ptr<HotKeys::Handle> handler;
    std::unique_ptr<HotKeys::Handle> observer;
    std::unique_ptr<HotKeys::Handle> chord;
};

TEST_F(PortalHotKeysTest, SaysWhoItIsWishesForTheChordAndHearsOfEachPress) {
    startBus();
    portal.emplace(address);

    claim();

    EXPECT_FALSE(hotKeys.isHeld()) << "not before the portal has said so";
    EXPECT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));
    EXPECT_THAT(portal->asked(), ElementsAre("Register org.example.App", "CreateSession",
                                             "BindShortcuts wake CTRL+ALT+LOGO+w"));
    EXPECT_EQ(changes, 1);
    portal->press("wake");
    portal->press("another");
    portal->press("wake");
    // What comes last is known last.
    portal->rebind("Super+F10");
    EXPECT_TRUE(isBoundTo("Super+F10"));
    EXPECT_EQ(presses, 2);
}

TEST_F(PortalHotKeysTest, GoesOnWithAPortalThatCannotBeToldWhoItIs) {
    startBus();
    portal.emplace(address, ShortcutsPortal::Behaviour{.hasRegistry = false});

    claim();

    EXPECT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));
    EXPECT_THAT(portal->asked(), SizeIs(2));
}

TEST_F(PortalHotKeysTest, FollowsWhatTheUserBindsInstead) {
    startBus();
    portal.emplace(address, ShortcutsPortal::Behaviour{.trigger = "Super+F9"});
    claim();
    ASSERT_TRUE(isBoundTo("Super+F9"));

    portal->rebind("Super+F10");
    EXPECT_TRUE(isBoundTo("Super+F10"));
    portal->rebind("");
    EXPECT_TRUE(isLost()) << "bound to no key at all";
}

TEST_F(PortalHotKeysTest, TakesAnAnswerThatComesLate) {
    startBus();
    portal.emplace(address, ShortcutsPortal::Behaviour{.answersAtOnce = false});
    claim();
    ASSERT_TRUE(becomes([&] { return portal->asked().size() == 3; }));
    EXPECT_FALSE(hotKeys.isHeld());

    portal->answer();

    EXPECT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));
}

TEST_F(PortalHotKeysTest, DoesNotAskAUserAgainWhoHasSaidNo) {
    startBus();
    portal.emplace(address, ShortcutsPortal::Behaviour{.outcome = 1});
    claim();
    ASSERT_TRUE(becomes([&] { return portal->asked().size() == 3; }));
    portal.reset();
    portal.emplace(address);
    PortalHotKeys others{mainQueue, {address, "org.example.Other", "Wakes"}};
    const auto otherChord = others.registerHotKey(support::wakeChord);
    EXPECT_TRUE(becomes([&] { return others.isHeld(); }));

    EXPECT_THAT(portal->asked(), testing::Not(testing::Contains("Register org.example.App")));
    EXPECT_FALSE(hotKeys.isHeld());
}

TEST_F(PortalHotKeysTest, FollowsAPortalThatComesEndsAndComesBack) {
    startBus();
    claim();
    portal.emplace(address);
    ASSERT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));

    portal.reset();
    EXPECT_TRUE(isLost());
    portal.emplace(address);
    EXPECT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));

    portal->press("wake");
    EXPECT_TRUE(becomes([&] { return presses == 1; }));
}

TEST_F(PortalHotKeysTest, ASessionThatThePortalClosesIsOpenedAnew) {
    startBus();
    portal.emplace(address);
    claim();
    ASSERT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));

    portal->closeSession();

    EXPECT_TRUE(isLost());
    EXPECT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));
}

TEST_F(PortalHotKeysTest, APortalWithoutShortcutsOrABusWithoutPortalGivesNone) {
    startBus();
    claim();
    portal.emplace(address, ShortcutsPortal::Behaviour{.hasShortcuts = false});
    ASSERT_TRUE(becomes([&] { return portal->asked().size() == 1; }));

    EXPECT_FALSE(hotKeys.isHeld());
    EXPECT_TRUE(hotKeys.desktopDecides());
}

TEST_F(PortalHotKeysTest, ABusThatHangsKeepsNobodyWaiting) {
    support::SilentSocket socket(folder.path() / "session");

    claim();
    socket.awaitClient();

    EXPECT_FALSE(hotKeys.isHeld());
    chord.reset();
}

TEST_F(PortalHotKeysTest, LettingGoEndsItAndAnotherClaimIsPossible) {
    startBus();
    portal.emplace(address);
    claim();
    EXPECT_EQ(hotKeys.registerHotKey(support::wakeChord), nullptr) << "one at a time";
    ASSERT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));

    chord.reset();
    EXPECT_FALSE(hotKeys.isHeld());

    chord = hotKeys.registerHotKey(support::wakeChord);
    EXPECT_TRUE(isBoundTo("Ctrl+Alt+Super+W"));
}

TEST_F(PortalHotKeysTest, OnlyThisApplicationsChordIsTranslated) {
    HotKeyRegistration other = support::wakeChord;
    other.keyCode = 12;

    EXPECT_EQ(hotKeys.registerHotKey(other), nullptr);
}

}  // namespace
}  // namespace tavrel
