#include "platform/x11/hotkeys/X11HotKeys.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "tests/platform/x11/hotkeys/FocusedWindow.h"
#include "tests/platform/x11/hotkeys/HotKeysFixture.h"

namespace tavrel {
namespace {

namespace key = support::key;
using support::waitUntil;
using support::wakeChord;

using X11HotKeysTest = HotKeysFixture;

TEST_F(X11HotKeysTest, OnePressIsOneCall) {
    ASSERT_TRUE(hotKeys->isHeld());

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

TEST_F(X11HotKeysTest, ASecondObserverIsRefusedWhileOneIsThere) {
    EXPECT_EQ(hotKeys->observeHeld([] {}), nullptr);

    observer.reset();

    EXPECT_NE(hotKeys->observeHeld([] {}), nullptr);
}

TEST_F(X11HotKeysTest, AChordThatNoKeyboardHasIsRefused) {
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
    observer.reset();

    EXPECT_EQ(presses, 0);
}

TEST_F(X11HotKeysTest, AChordClaimedOnceTheServerIsGoneIsNotHeld) {
    chord.reset();

    desktop.kill();

    EXPECT_TRUE(waitUntil([&] {
        chord = hotKeys->registerHotKey(wakeChord);
        const bool isHeld = hotKeys->isHeld();
        chord.reset();
        return !isHeld;
    }));
}

TEST_F(X11HotKeysTest, AChordMayBeHeldWhenTheServerGoes) {
    desktop.kill();
    awaitHandingOn();

    chord.reset();
    hotKeys.reset();
}

TEST(X11HotKeysWithoutServerTest, AChordIsNotHeldAndAHandlerInstalled) {
    ManualMainQueue queue;
    X11HotKeys hotKeys(queue, {.displayName = ":4093"});

    const auto claimed = hotKeys.registerHotKey(wakeChord);

    EXPECT_NE(claimed, nullptr);
    EXPECT_FALSE(hotKeys.isHeld());
    EXPECT_NE(hotKeys.installEventHandler([] {}), nullptr);
}

class X11HotKeysWithoutRandrTest : public X11HotKeysTest {
protected:
    X11HotKeysWithoutRandrTest() : X11HotKeysTest({.randr = false}) {}
};

TEST_F(X11HotKeysWithoutRandrTest, OnePressIsOneCall) {
    ASSERT_TRUE(hotKeys->isHeld());

    EXPECT_EQ(pressesAfterChord(), 1);
}

}  // namespace
}  // namespace tavrel