#include "platform/x11/hotkeys/X11HotKeys.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include "platform/HotKeys.h"
#include "tests/platform/x11/hotkeys/FocusedWindow.h"
#include "tests/platform/x11/hotkeys/ManualMainQueue.h"
#include "tests/platform/x11/hotkeys/RunXProgram.h"
#include "tests/support/Keyboard.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/XConnection.h"

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

TEST_F(X11HotKeysTest, IsRefusedAChordOfWhichAnotherProgramHoldsAPart) {
    const support::XConnection program(desktop.displayName());
    chord.reset();
    // With Num Lock only: the last part to be asked for.
    constexpr std::uint16_t modifiers =
        XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | XCB_MOD_MASK_2;
    constexpr xcb_keycode_t keyW = 25;
    xcb_grab_key(program.get(), 0, program.root(), modifiers, keyW, XCB_GRAB_MODE_ASYNC,
                 XCB_GRAB_MODE_ASYNC);
    program.roundTrip();
    EXPECT_EQ(hotKeys->registerHotKey(wakeChord), nullptr);

    FocusedWindow window(desktop.displayName());
    pressChord();
    EXPECT_TRUE(support::waitUntil([&] { return window.presses('w') == 1; }))
        << "what was not refused is still held";
}

TEST_F(X11HotKeysTest, IsRefusedWhatTheKeyboardCannotType) {
    HotKeyRegistration strange = wakeChord;
    strange.keyCode = 200;
    EXPECT_EQ(hotKeys->registerHotKey(strange), nullptr);
}

TEST_F(X11HotKeysTest, AReleasedChordGoesToTheFocusedWindowAgain) {
    FocusedWindow window(desktop.displayName());
    pressChord();
    chord.reset();
    pressChord();
    EXPECT_TRUE(support::waitUntil([&] { return window.presses('w') == 1; }));
    settle();
    EXPECT_EQ(presses, 1);
}

TEST_F(X11HotKeysTest, EveryHandlerHearsOfAPressUntilItIsRemoved) {
    int others = 0;
    auto second = hotKeys->installEventHandler([&] { ++others; });
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1);
    EXPECT_EQ(others, 1);
    second.reset();
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1);
    EXPECT_EQ(others, 1);
}

TEST_F(X11HotKeysTest, AHandlerRemovedBeforeItsTurnHearsNothing) {
    pressChord();
    for (int i = 0; i < 2; ++i) {
        hotKeys->registerHotKey(wakeChord);
    }
    handler.reset();
    queue.runAll();
    EXPECT_EQ(presses, 0);
}

TEST_F(X11HotKeysTest, AHandlerMayRemoveItself) {
    handler = hotKeys->installEventHandler([this] {
        ++presses;
        handler.reset();
    });
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 1);
    EXPECT_EQ(pressesAfter([&] { pressChord(); }), 0);
}

TEST_F(X11HotKeysTest, HandlesMayOutliveIt) {
    pressChord();
    hotKeys.reset();
    queue.runAll();
    chord.reset();
    handler.reset();
    EXPECT_EQ(presses, 0);
}

TEST_F(X11HotKeysTest, AKeyThatGetsTheLetterTakesPart) {
    constexpr const char* keyF9 = "keycode 75 = w W";
    constexpr xcb_keysym_t symbolF10 = 0xffc7;
    runXProgram(desktop,
                {"xmodmap", "-e", "keycode 25 = v V", "-e", keyF9, "-e", "keycode 76 = F10"});
    ASSERT_TRUE(support::waitUntil([&] { return pressesAfter([&] { pressChord('w'); }) == 1; }));
    EXPECT_EQ(pressesAfter([&] { pressChord(symbolF10); }), 0);
    EXPECT_EQ(pressesAfter([&] { pressChord('w'); }), 1);
}

TEST_F(X11HotKeysTest, OutlivesTheServer) {
    desktop.kill();
    EXPECT_TRUE(support::waitUntil([&] { return hotKeys->registerHotKey(wakeChord) == nullptr; }));
    chord.reset();
    hotKeys.reset();
}

TEST(X11HotKeysWithoutServerTest, AreRefused) {
    ManualMainQueue queue;
    X11HotKeys hotKeys(queue, {.displayName = ":4093"});
    EXPECT_EQ(hotKeys.registerHotKey(wakeChord), nullptr);
    EXPECT_NE(hotKeys.installEventHandler([] {}), nullptr);
}

TEST(X11HotKeysWithoutRandrTest, WorkAllTheSame) {
    const support::VirtualDesktop desktop({.randr = false});
    ManualMainQueue queue;
    X11HotKeys hotKeys(queue, {.displayName = desktop.displayName()});
    int presses = 0;
    const auto handler = hotKeys.installEventHandler([&] { ++presses; });
    const auto chord = hotKeys.registerHotKey(wakeChord);
    ASSERT_NE(chord, nullptr);
    const support::Keyboard keyboard(desktop.displayName());
    keyboard.chord({key::control, key::alt, key::super, 'w'});
    EXPECT_TRUE(queue.runUntil([&] { return presses == 1; }));
}

}  // namespace
}  // namespace tavrel
