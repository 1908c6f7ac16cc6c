#include "platform/x11/X11HotKeys.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include "platform/HotKeys.h"
#include "tests/platform/x11/FocusedWindow.h"
#include "tests/platform/x11/ManualMainQueue.h"
#include "tests/platform/x11/RunXProgram.h"
#include "tests/support/Keyboard.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel {
namespace {

namespace key = support::key;

constexpr HotKeyRegistration wakeChord{
    .keyCode = 13,
    .modifiers = hotKeyModifier::control | hotKeyModifier::option | hotKeyModifier::command,
    .signature = 0x4443544C,
    .id = 1,
    .options = 0};

class X11HotKeysTest : public testing::Test {
protected:
    void pressChord(xcb_keysym_t letter = 'w') const {
        keyboard.chord({key::control, key::alt, key::super, letter});
    }

    /// Returns when every press made so far has been counted.
    void settle() {
        // The server has sent a press before it answers whoever made it. So it has come in
        // by the time a first claim is answered, and been handed on when a second one is.
        for (int i = 0; i < 2; ++i) {
            hotKeys->registerHotKey(wakeChord);
        }
        queue.runAll();
    }

    int pressesAfter(const std::function<void()>& act) {
        const int before = presses;
        act();
        settle();
        return presses - before;
    }

    support::VirtualDesktop desktop{{.monitors = 1}};
    support::Keyboard keyboard{desktop.displayName()};
    ManualMainQueue queue;
    std::unique_ptr<X11HotKeys> hotKeys =
        std::make_unique<X11HotKeys>(queue, X11ServerOptions{.displayName = desktop.displayName()});
    int presses = 0;
    std::unique_ptr<HotKeys::Handle> handler = hotKeys->installEventHandler([this] { ++presses; });
    std::unique_ptr<HotKeys::Handle> chord = hotKeys->registerHotKey(wakeChord);
};

TEST_F(X11HotKeysTest, OnePressIsOneCall) {
    ASSERT_NE(chord, nullptr);
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1);
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1);
    EXPECT_EQ(pressesAfter([&] {
                  for (int i = 0; i < 50; ++i) {
                      pressChord();
                  }
              }),
              50);
}

TEST_F(X11HotKeysTest, OtherChordsAreNobodysBusiness) {
    EXPECT_EQ(pressesAfter([&] {
                  keyboard.tap('w');
                  keyboard.chord({key::control, key::alt, 'w'});
                  keyboard.chord({key::control, key::super, 'w'});
                  keyboard.chord({key::alt, key::super, 'w'});
                  keyboard.chord({key::control, key::alt, key::super, 'e'});
                  keyboard.chord({key::control, key::alt, key::super, key::shift, 'w'});
              }),
              0);
}

TEST_F(X11HotKeysTest, CapsLockAndNumLockMakeNoDifference) {
    keyboard.tap(key::capsLock);
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1) << "Caps Lock";
    keyboard.tap(key::numLock);
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1) << "Caps Lock and Num Lock";
    keyboard.tap(key::capsLock);
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1) << "Num Lock";
    keyboard.tap(key::numLock);
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1) << "neither";
}

TEST_F(X11HotKeysTest, AHeldKeyIsOnePress) {
    runXProgram(desktop, {"xset", "r", "rate", "100", "50"});
    const auto begin = std::chrono::steady_clock::now();
    {
        FocusedWindow window(desktop.displayName());
        keyboard.press('e');
        ASSERT_TRUE(support::waitUntil([&] { return window.presses('e') > 10; }));
        keyboard.release('e');
    }
    const auto severalRepeats = std::chrono::steady_clock::now() - begin;

    EXPECT_EQ(pressesAfter([&] {
                  for (const xcb_keysym_t each : {key::control, key::alt, key::super}) {
                      keyboard.press(each);
                  }
                  keyboard.press('w');
                  std::this_thread::sleep_for(severalRepeats);
                  keyboard.release('w');
                  keyboard.press('w');
                  std::this_thread::sleep_for(severalRepeats);
                  keyboard.release('w');
                  for (const xcb_keysym_t each : {key::super, key::alt, key::control}) {
                      keyboard.release(each);
                  }
              }),
              2);
}

TEST_F(X11HotKeysTest, TheFocusedWindowDoesNotGetTheKeyToo) {
    FocusedWindow window(desktop.displayName());
    keyboard.tap('w');
    ASSERT_TRUE(support::waitUntil([&] { return window.presses('w') == 1; }));

    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1);
    keyboard.tap('q');
    ASSERT_TRUE(support::waitUntil([&] { return window.presses('q') == 1; }));
    EXPECT_EQ(window.presses('w'), 1);
}

TEST_F(X11HotKeysTest, FollowsItsLetterWhenTheLayoutChanges) {
    runXProgram(desktop, {"setxkbmap", "-layout", "us", "-variant", "dvorak"});
    // The letter is now where the comma was, and v is where it was.
    ASSERT_TRUE(support::waitUntil([&] {
        return pressesAfter([&] { pressChord('w'); }) == 1 &&
               pressesAfter([&] { pressChord(','); }) == 0;
    }));
    runXProgram(desktop, {"setxkbmap", "-layout", "us"});
    ASSERT_TRUE(support::waitUntil([&] {
        return pressesAfter([&] { pressChord('w'); }) == 1 &&
               pressesAfter([&] { pressChord(','); }) == 0;
    }));
}

TEST_F(X11HotKeysTest, IsRefusedAChordThatAnotherProgramHolds) {
    chord.reset();
    X11HotKeys otherProgram(queue, {.displayName = desktop.displayName()});
    auto taken = otherProgram.registerHotKey(wakeChord);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(hotKeys->registerHotKey(wakeChord), nullptr);

    taken.reset();
    chord = hotKeys->registerHotKey(wakeChord);
    EXPECT_NE(chord, nullptr) << "the refused attempt or the released chord left a grab behind";
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1);
}

}  // namespace
}  // namespace tavrel
