#include "platform/x11/hotkeys/X11HotKeys.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include "tests/platform/x11/hotkeys/FocusedWindow.h"
#include "tests/platform/x11/hotkeys/ManualMainQueue.h"
#include "tests/platform/x11/hotkeys/RunXProgram.h"
#include "tests/support/Keyboard.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/WakeChord.h"
#include "tests/support/XConnection.h"

namespace tavrel {
namespace {

namespace key = support::key;
using support::waitUntil;
using support::wakeChord;

class X11HotKeysTest : public testing::Test {
protected:
    explicit X11HotKeysTest(const support::VirtualDesktop::Options& options = {.monitors = 1})
        : desktop(options) {}

    void pressChord(xcb_keysym_t letter = 'w') const {
        keyboard.chord({key::control, key::alt, key::super, letter});
    }

    /// Returns when every chord pressed so far has been handed to the main queue.
    void awaitHandingOn() {
        // Once the chord has been let go, the server has sent its press. So the press is there
        // when the first call gets its turn on the thread that listens, and has been handed on
        // when the second one does.
        for (int i = 0; i < 2; ++i) {
            hotKeys->registerHotKey(wakeChord);
        }
    }

    int pressesAfter(const std::function<void()>& act) {
        const int before = presses;
        act();
        awaitHandingOn();
        queue.runAll();
        return presses - before;
    }

    int pressesAfterChord(xcb_keysym_t letter = 'w') {
        return pressesAfter([&] { pressChord(letter); });
    }

    support::VirtualDesktop desktop;
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

    EXPECT_EQ(pressesAfterChord(), 1);
    EXPECT_EQ(pressesAfterChord(), 1);
    EXPECT_EQ(pressesAfter([&] {
                  for (int i = 0; i < 50; ++i) {
                      pressChord();
                  }
              }),
              50);
}

TEST_F(X11HotKeysTest, OtherChordsAreIgnored) {
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
    EXPECT_EQ(pressesAfterChord(), 1) << "Caps Lock";
    keyboard.tap(key::numLock);
    EXPECT_EQ(pressesAfterChord(), 1) << "Caps Lock and Num Lock";
    keyboard.tap(key::capsLock);
    EXPECT_EQ(pressesAfterChord(), 1) << "Num Lock";
    keyboard.tap(key::numLock);
    EXPECT_EQ(pressesAfterChord(), 1) << "neither";
}

TEST_F(X11HotKeysTest, AHeldKeyIsOnePress) {
    runXProgram(desktop, {"xset", "r", "rate", "100", "50"});
    const auto begin = std::chrono::steady_clock::now();
    {
        FocusedWindow window(desktop.displayName());
        keyboard.press('e');
        ASSERT_TRUE(waitUntil([&] { return window.presses('e') > 10; }));
        keyboard.release('e');
    }
    const auto severalRepeats = std::chrono::steady_clock::now() - begin;

    EXPECT_EQ(pressesAfter([&] {
                  for (const xcb_keysym_t each : {key::control, key::alt, key::super}) {
                      keyboard.press(each);
                  }
                  for (int i = 0; i < 2; ++i) {
                      keyboard.press('w');
                      std::this_thread::sleep_for(severalRepeats);
                      keyboard.release('w');
                  }
                  for (const xcb_keysym_t each : {key::super, key::alt, key::control}) {
                      keyboard.release(each);
                  }
              }),
              2);
}

TEST_F(X11HotKeysTest, TheFocusedWindowDoesNotGetTheKeyToo) {
    FocusedWindow window(desktop.displayName());
    keyboard.tap('w');
    ASSERT_TRUE(waitUntil([&] { return window.presses('w') == 1; }));

    EXPECT_EQ(pressesAfterChord(), 1);

    keyboard.tap('q');
    ASSERT_TRUE(waitUntil([&] { return window.presses('q') == 1; }));
    EXPECT_EQ(window.presses('w'), 1);
}

TEST_F(X11HotKeysTest, TheChordFollowsItsLetterWhenTheLayoutChanges) {
    // In the first, the letter is where the comma is in the second, and v is where it is there.
    for (const char* variant : {"dvorak", ""}) {
        runXProgram(desktop, {"setxkbmap", "-layout", "us", "-variant", variant});
        EXPECT_TRUE(waitUntil([&] {
            return pressesAfterChord('w') == 1 && pressesAfterChord(',') == 0;
        })) << variant;
    }
}

TEST_F(X11HotKeysTest, AKeyThatGetsTheLetterTakesPart) {
    constexpr const char* keyF9 = "keycode 75 = w W";
    constexpr xcb_keysym_t symbolF10 = 0xffc7;

    runXProgram(desktop,
                {"xmodmap", "-e", "keycode 25 = v V", "-e", keyF9, "-e", "keycode 76 = F10"});

    ASSERT_TRUE(waitUntil([&] { return pressesAfterChord('w') == 1; }));
    EXPECT_EQ(pressesAfterChord(symbolF10), 0);
    EXPECT_EQ(pressesAfterChord('w'), 1);
}

TEST_F(X11HotKeysTest, AChordThatAnotherProgramHoldsIsRefused) {
    chord.reset();
    X11HotKeys otherProgram(queue, {.displayName = desktop.displayName()});
    auto taken = otherProgram.registerHotKey(wakeChord);
    ASSERT_NE(taken, nullptr);

    EXPECT_EQ(hotKeys->registerHotKey(wakeChord), nullptr);

    taken.reset();
    chord = hotKeys->registerHotKey(wakeChord);
    EXPECT_NE(chord, nullptr) << "the refused attempt or the released chord left a grab behind";
    EXPECT_EQ(pressesAfterChord(), 1);
}

TEST_F(X11HotKeysTest, AChordOfWhichAnotherProgramHoldsAPartIsRefused) {
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
    EXPECT_TRUE(waitUntil([&] { return window.presses('w') == 1; }))
        << "what was not refused is still held";
}

TEST_F(X11HotKeysTest, AChordThatTheKeyboardCannotTypeIsRefused) {
    chord.reset();
    HotKeyRegistration strange = wakeChord;
    strange.keyCode = 200;

    EXPECT_EQ(hotKeys->registerHotKey(strange), nullptr);

    EXPECT_NE(hotKeys->registerHotKey(wakeChord), nullptr);
}

TEST_F(X11HotKeysTest, ASecondChordIsRefusedWhileOneIsHeld) {
    EXPECT_EQ(hotKeys->registerHotKey(wakeChord), nullptr);
    EXPECT_EQ(pressesAfterChord(), 1);

    chord.reset();

    EXPECT_NE(hotKeys->registerHotKey(wakeChord), nullptr);
}

TEST_F(X11HotKeysTest, AReleasedChordGoesToTheFocusedWindowAgain) {
    FocusedWindow window(desktop.displayName());
    ASSERT_EQ(pressesAfterChord(), 1);

    chord.reset();

    EXPECT_EQ(pressesAfterChord(), 0);
    EXPECT_TRUE(waitUntil([&] { return window.presses('w') == 1; }));
}

TEST_F(X11HotKeysTest, ASecondHandlerIsRefusedWhileOneIsInstalled) {
    EXPECT_EQ(hotKeys->installEventHandler([] {}), nullptr);
    EXPECT_EQ(pressesAfterChord(), 1);

    handler.reset();

    EXPECT_NE(hotKeys->installEventHandler([] {}), nullptr);
    EXPECT_EQ(pressesAfterChord(), 0);
}

TEST_F(X11HotKeysTest, AHandlerRemovedBeforeItsTurnIsNotCalled) {
    pressChord();
    awaitHandingOn();

    handler.reset();
    queue.runAll();

    EXPECT_EQ(presses, 0);
}

TEST_F(X11HotKeysTest, AHandlerMayRemoveItself) {
    handler.reset();
    handler = hotKeys->installEventHandler([this] {
        ++presses;
        handler.reset();
    });

    EXPECT_EQ(pressesAfterChord(), 1);
    EXPECT_EQ(pressesAfterChord(), 0);
}

TEST_F(X11HotKeysTest, HandlesMayOutliveTheHotKeys) {
    pressChord();
    awaitHandingOn();

    hotKeys.reset();
    queue.runAll();
    chord.reset();
    handler.reset();

    EXPECT_EQ(presses, 0);
}

TEST_F(X11HotKeysTest, AChordIsRefusedOnceTheServerIsGone) {
    chord.reset();

    desktop.kill();

    EXPECT_TRUE(waitUntil([&] { return hotKeys->registerHotKey(wakeChord) == nullptr; }));
}

TEST_F(X11HotKeysTest, AChordMayBeHeldWhenTheServerGoes) {
    desktop.kill();
    awaitHandingOn();

    chord.reset();
    hotKeys.reset();
}

TEST(X11HotKeysWithoutServerTest, AChordIsRefusedAndAHandlerInstalled) {
    ManualMainQueue queue;
    X11HotKeys hotKeys(queue, {.displayName = ":4093"});

    EXPECT_EQ(hotKeys.registerHotKey(wakeChord), nullptr);
    EXPECT_NE(hotKeys.installEventHandler([] {}), nullptr);
}

class X11HotKeysWithoutRandrTest : public X11HotKeysTest {
protected:
    X11HotKeysWithoutRandrTest() : X11HotKeysTest({.randr = false}) {}
};

TEST_F(X11HotKeysWithoutRandrTest, OnePressIsOneCall) {
    ASSERT_NE(chord, nullptr);

    EXPECT_EQ(pressesAfterChord(), 1);
}

}  // namespace
}  // namespace tavrel
