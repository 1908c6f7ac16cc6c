#include "platform/x11/hotkeys/X11HotKeys.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
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
        : desktop(options) {
        claim();
    }

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

    void setLayout(const char* layout, const char* variant = "") const {
        runXProgram(desktop, {"setxkbmap", "-layout", layout, "-variant", variant});
    }

    /// The application's next run on this desktop, after `hotKeys.reset()`.
    void startAgain() {
        chord.reset();
        handler.reset();
        observer.reset();
        hotKeys = std::make_unique<X11HotKeys>(
            queue, X11ServerOptions{.displayName = desktop.displayName()});
        claim();
    }

    void claim() {
        handler = hotKeys->installEventHandler([this] { ++presses; });
        observer = hotKeys->observeHeld([this] { ++heldChanges; });
        chord = hotKeys->registerHotKey(wakeChord);
        // What registering itself has changed is none of the changes to count.
        queue.runAll();
        heldChanges = 0;
    }

    static constexpr xcb_keycode_t keyW = 25;
    /// What a Russian keyboard has there: Cyrillic_tse.
    static constexpr xcb_keysym_t letterInPlaceOfW = 0x06c3;

    support::VirtualDesktop desktop;
    support::Keyboard keyboard{desktop.displayName()};
    ManualMainQueue queue;
    std::unique_ptr<X11HotKeys> hotKeys =
        std::make_unique<X11HotKeys>(queue, X11ServerOptions{.displayName = desktop.displayName()});
    int presses = 0;
    int heldChanges = 0;
    std::unique_ptr<HotKeys::Handle> handler;
    std::unique_ptr<HotKeys::Handle> observer;
    std::unique_ptr<HotKeys::Handle> chord;
};

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

TEST_F(X11HotKeysTest, ALayoutWithoutTheLetterHasTheChordInItsPlace) {
    setLayout("ru");
    ASSERT_TRUE(waitUntil([&] { return pressesAfterChord(letterInPlaceOfW) == 1; }));
    EXPECT_TRUE(hotKeys->isHeld());

    setLayout("us");

    EXPECT_TRUE(waitUntil([&] { return pressesAfterChord('w') == 1; }));
}

TEST_F(X11HotKeysTest, AChordClaimedOnALayoutWithoutTheLetterIsHeldAtOnce) {
    hotKeys.reset();
    setLayout("ru");

    startAgain();

    EXPECT_TRUE(hotKeys->isHeld());
    EXPECT_EQ(pressesAfterChord(letterInPlaceOfW), 1);
}

TEST_F(X11HotKeysTest, AChordThatTheKeyboardCannotTypeIsHeldOnceItCan) {
    EXPECT_TRUE(hotKeys->isHeld());

    runXProgram(desktop, {"xmodmap", "-e", "clear mod4"});
    EXPECT_TRUE(queue.runUntil([&] { return heldChanges == 1; }));
    EXPECT_FALSE(hotKeys->isHeld());

    runXProgram(desktop, {"xmodmap", "-e", "add mod4 = Super_L"});
    EXPECT_TRUE(queue.runUntil([&] { return heldChanges == 2; }));
    EXPECT_TRUE(hotKeys->isHeld());
    EXPECT_EQ(pressesAfterChord(), 1);
}

TEST_F(X11HotKeysTest, AChordThatASecondCopyHoldsIsHeldOnceTheCopyIsGone) {
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

TEST_F(X11HotKeysTest, AChordLostWithAChangeOfLayoutIsHeldAgainOnceItIsFree) {
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

TEST_F(X11HotKeysTest, AChordOfWhichAnotherProgramHoldsAPartIsNotHeld) {
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

TEST_F(X11HotKeysTest, AChordGivenUpIsNotTriedForAgain) {
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
