#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "tests/platform/x11/hotkeys/FocusedWindow.h"
#include "tests/platform/x11/hotkeys/HotKeysFixture.h"
#include "tests/support/XConnection.h"

namespace tavrel {
namespace {

using support::waitUntil;
using support::wakeChord;

/// What becomes of a chord when the keyboard changes, or somebody else has it.
using HotKeyRetryTest = HotKeysFixture;

TEST_F(HotKeyRetryTest, TheChordFollowsItsLetterWhenTheLayoutChanges) {
    // In the first, the letter is where the comma is in the second, and v is where it is there.
    for (const char* variant : {"dvorak", ""}) {
        runXProgram(desktop, {"setxkbmap", "-layout", "us", "-variant", variant});
        EXPECT_TRUE(waitUntil([&] {
            return pressesAfterChord('w') == 1 && pressesAfterChord(',') == 0;
        })) << variant;
    }
}

TEST_F(HotKeyRetryTest, AKeyThatGetsTheLetterTakesPart) {
    constexpr const char* keyF9 = "keycode 75 = w W";
    constexpr xcb_keysym_t symbolF10 = 0xffc7;

    runXProgram(desktop,
                {"xmodmap", "-e", "keycode 25 = v V", "-e", keyF9, "-e", "keycode 76 = F10"});

    ASSERT_TRUE(waitUntil([&] { return pressesAfterChord('w') == 1; }));
    EXPECT_EQ(pressesAfterChord(symbolF10), 0);
    EXPECT_EQ(pressesAfterChord('w'), 1);
}

TEST_F(HotKeyRetryTest, ALayoutWithoutTheLetterHasTheChordInItsPlace) {
    setLayout("ru");
    ASSERT_TRUE(waitUntil([&] { return pressesAfterChord(letterInPlaceOfW) == 1; }));
    EXPECT_TRUE(hotKeys->isHeld());

    setLayout("us");

    EXPECT_TRUE(waitUntil([&] { return pressesAfterChord('w') == 1; }));
}

TEST_F(HotKeyRetryTest, AChordClaimedOnALayoutWithoutTheLetterIsHeldAtOnce) {
    hotKeys.reset();
    setLayout("ru");

    startAgain();

    EXPECT_TRUE(hotKeys->isHeld());
    EXPECT_EQ(pressesAfterChord(letterInPlaceOfW), 1);
}

TEST_F(HotKeyRetryTest, AChordThatTheKeyboardCannotTypeIsHeldOnceItCan) {
    EXPECT_TRUE(hotKeys->isHeld());

    runXProgram(desktop, {"xmodmap", "-e", "clear mod4"});
    EXPECT_TRUE(queue.runUntil([&] { return heldChanges == 1; }));
    EXPECT_FALSE(hotKeys->isHeld());

    runXProgram(desktop, {"xmodmap", "-e", "add mod4 = Super_L"});
    EXPECT_TRUE(queue.runUntil([&] { return heldChanges == 2; }));
    EXPECT_TRUE(hotKeys->isHeld());
    EXPECT_EQ(pressesAfterChord(), 1);
}

TEST_F(HotKeyRetryTest, AChordThatASecondCopyHoldsIsHeldOnceTheCopyIsGone) {
    hotKeys.reset();
    std::optional<X11HotKeys> copy(std::in_place, queue,
                                   X11ServerOptions{.displayName = desktop.displayName()});
    const auto taken = copy->registerHotKey(wakeChord);
    ASSERT_TRUE(copy->isHeld());

    startAgain();
    ASSERT_NE(chord, nullptr);
    EXPECT_FALSE(hotKeys->isHeld());
    EXPECT_EQ(pressesAfterChord(), 0);

    copy.reset();
    EXPECT_TRUE(queue.runUntil([&] { return heldChanges == 1; }));
    EXPECT_TRUE(hotKeys->isHeld());
    EXPECT_EQ(pressesAfterChord(), 1);
}

TEST_F(HotKeyRetryTest, AChordLostWithAChangeOfLayoutIsHeldAgainOnceItIsFree) {
    std::optional<support::XConnection> program(desktop.displayName());
    setLayout("us", "dvorak");
    ASSERT_TRUE(waitUntil([&] { return pressesAfterChord('w') == 1; }));
    // In this layout the letter is on another key.
    xcb_grab_key(program->get(), 0, program->root(), XCB_MOD_MASK_ANY, keyW, XCB_GRAB_MODE_ASYNC,
                 XCB_GRAB_MODE_ASYNC);
    program->roundTrip();

    setLayout("us");
    EXPECT_TRUE(queue.runUntil([&] { return !hotKeys->isHeld(); }));

    program.reset();
    EXPECT_TRUE(queue.runUntil([&] { return hotKeys->isHeld(); }));
    EXPECT_EQ(pressesAfterChord(), 1);
}

TEST_F(HotKeyRetryTest, AChordOfWhichAnotherProgramHoldsAPartIsNotHeld) {
    const support::XConnection program(desktop.displayName());
    chord.reset();
    // With Num Lock only: the last part to be asked for.
    constexpr std::uint16_t modifiers =
        XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | XCB_MOD_MASK_2;
    xcb_grab_key(program.get(), 0, program.root(), modifiers, keyW, XCB_GRAB_MODE_ASYNC,
                 XCB_GRAB_MODE_ASYNC);
    program.roundTrip();

    chord = hotKeys->registerHotKey(wakeChord);

    EXPECT_FALSE(hotKeys->isHeld());
    FocusedWindow window(desktop.displayName());
    // An attempt holds the other parts for a moment.
    EXPECT_TRUE(waitUntil([&] {
        pressChord();
        return window.presses('w') > 0;
    })) << "what was not refused is still held";

    xcb_ungrab_key(program.get(), keyW, program.root(), modifiers);
    program.roundTrip();
    EXPECT_TRUE(queue.runUntil([&] { return hotKeys->isHeld(); }));
}

TEST_F(HotKeyRetryTest, AChordGivenUpIsNotTriedForAgain) {
    const support::XConnection program(desktop.displayName());
    hotKeys.reset();
    std::optional<support::ChordHolder> holder(std::in_place, desktop.displayName());
    startAgain();
    ASSERT_FALSE(hotKeys->isHeld());

    chord.reset();
    holder.reset();
    // What makes it look again, were there anything to look for.
    setLayout("us", "dvorak");
    setLayout("us");
    awaitHandingOn();

    EXPECT_FALSE(hotKeys->isHeld());
    EXPECT_NO_THROW(holder.emplace(desktop.displayName()));
}

}  // namespace
}  // namespace tavrel
