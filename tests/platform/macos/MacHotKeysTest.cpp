#include "platform/macos/MacHotKeys.h"

#include "app/AppDelegate.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/Carbon.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/support/WakeChord.h"

namespace tavrel {
namespace {

using simulatedMac::installedEventHandlers;
using simulatedMac::pressHotKey;
using simulatedMac::Refusals;
using simulatedMac::registeredHotKeys;
using simulatedMac::takeCalls;
using support::wakeChord;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

class MacHotKeysTest : public MacFixture {
protected:
    ~MacHotKeysTest() override {
        EXPECT_EQ(installedEventHandlers(), 0U);
        EXPECT_EQ(registeredHotKeys(), 0U);
    }

    static auto press() { return pressHotKey(wakeChord.keyCode, wakeChord.modifiers); }

    MacHotKeys hotKeys;
    int presses = 0;
    const Task count = [this] { ++presses; };

    SimulatedPlatform system;
    AppDelegate delegate{system.platform(), hotKeys};
};

TEST_F(MacHotKeysTest, AreInstalledAndRegisteredByTheDelegateAndReleasedInReverse) {
    delegate.applicationDidFinishLaunching();
    EXPECT_THAT(takeCalls(),
                ElementsAre("InstallEventHandler(application, {0x6B657962, 5}, no user data)",
                            "RegisterEventHotKey(13, 0x1900, {0x4443544C, 1}, application, 0)"));

    delegate.applicationWillTerminate();
    EXPECT_THAT(takeCalls(), ElementsAre("UnregisterEventHotKey", "RemoveEventHandler"));
}

TEST_F(MacHotKeysTest, PassOnEveryNumberOfARegistration) {
    const auto hotKey = hotKeys.registerHotKey(
        {.keyCode = 49, .modifiers = 0x100, .signature = 0x74657374, .id = 7, .options = 1});

    EXPECT_THAT(takeCalls(),
                ElementsAre("RegisterEventHotKey(49, 0x100, {0x74657374, 7}, application, 1)"));
}

TEST_F(MacHotKeysTest, AreHeldForAsLongAsAnAcceptedRegistrationLives) {
    EXPECT_FALSE(hotKeys.isHeld());

    auto hotKey = hotKeys.registerHotKey(wakeChord);
    EXPECT_TRUE(hotKeys.isHeld());
    EXPECT_EQ(hotKeys.observeHeld(count), nullptr);

    hotKey.reset();
    EXPECT_FALSE(hotKeys.isHeld());
}

TEST_F(MacHotKeysTest, RunTheTaskOnceForEachPressOfTheirChordAndReportItAsHandled) {
    const auto handler = hotKeys.installEventHandler(count);
    const auto hotKey = hotKeys.registerHotKey(wakeChord);

    EXPECT_THAT(press(), Optional(ElementsAre(0)));
    EXPECT_EQ(presses, 1);
    press();
    EXPECT_EQ(presses, 2);

    EXPECT_EQ(pressHotKey(wakeChord.keyCode, 0x100), std::nullopt);
    EXPECT_EQ(pressHotKey(12, wakeChord.modifiers), std::nullopt);
    EXPECT_EQ(presses, 2);
}

TEST_F(MacHotKeysTest, DoNothingOnceTheHotKeyOrTheHandlerIsReleased) {
    auto handler = hotKeys.installEventHandler(count);
    auto hotKey = hotKeys.registerHotKey(wakeChord);

    hotKey.reset();
    EXPECT_EQ(press(), std::nullopt);

    hotKey = hotKeys.registerHotKey(wakeChord);
    handler.reset();
    EXPECT_THAT(press(), Optional(IsEmpty()));
    EXPECT_EQ(presses, 0);
}

TEST_F(MacHotKeysTest, TakeOneHandlerAtATimeAndAnotherAfterItsRelease) {
    auto first = hotKeys.installEventHandler([] { FAIL() << "released before the press"; });
    EXPECT_EQ(hotKeys.installEventHandler(count), nullptr);
    EXPECT_EQ(installedEventHandlers(), 1U);

    first.reset();
    const auto second = hotKeys.installEventHandler(count);
    const auto hotKey = hotKeys.registerHotKey(wakeChord);
    press();
    EXPECT_EQ(presses, 1);
}

TEST_F(MacHotKeysTest, LetAHandlerReleaseItself) {
    std::unique_ptr<HotKeys::Handle> handler;
    handler = hotKeys.installEventHandler([&] {
        handler.reset();
        ++presses;
    });
    const auto hotKey = hotKeys.registerHotKey(wakeChord);

    press();
    press();
    EXPECT_EQ(presses, 1);
}

TEST_F(MacHotKeysTest, GiveNoHandleForAHandlerThatTheSystemRefuses) {
    refuse(&Refusals::installEventHandler, -9860);
    EXPECT_EQ(hotKeys.installEventHandler(count), nullptr);

    refuse(&Refusals::installEventHandler, 0);
    EXPECT_NE(hotKeys.installEventHandler(count), nullptr);
}

TEST_F(MacHotKeysTest, AreAcceptedButDoNotFireWhileAnotherProgramHoldsTheChordExclusively) {
    mac.with([](simulatedMac::State& state) { state.chordsAreHeldElsewhere = true; });
    const auto handler = hotKeys.installEventHandler(count);
    const auto hotKey = hotKeys.registerHotKey(wakeChord);

    EXPECT_NE(hotKey, nullptr);
    EXPECT_TRUE(hotKeys.isHeld());
    EXPECT_THAT(press(), Optional(IsEmpty()));
    EXPECT_EQ(presses, 0);
}

TEST_F(MacHotKeysTest, GiveNoHandleForAChordThatIsRefusedAndTheDelegateDoesWithoutIt) {
    refuse(&Refusals::registerHotKey, -9878);
    EXPECT_EQ(hotKeys.registerHotKey(wakeChord), nullptr);

    delegate.applicationDidFinishLaunching();
    takeCalls();
    delegate.applicationWillTerminate();
    EXPECT_THAT(takeCalls(), ElementsAre("RemoveEventHandler"));
}

}  // namespace
}  // namespace tavrel
