#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "platform/x11/hotkeys/X11HotKeys.h"
#include "tests/platform/x11/hotkeys/ManualMainQueue.h"
#include "tests/platform/x11/hotkeys/RunXProgram.h"
#include "tests/support/Keyboard.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/WakeChord.h"

namespace tavrel {

/// The hot key on a real X server with a keyboard, and how often it was pressed.
class HotKeysFixture : public testing::Test {
protected:
    explicit HotKeysFixture(const support::VirtualDesktop::Options& options = {.monitors = 1})
        : desktop(options) {
        claim();
    }

    void pressChord(xcb_keysym_t letter = 'w') const {
        keyboard.chord({support::key::control, support::key::alt, support::key::super, letter});
    }

    /// Returns when every chord pressed so far has been handed to the main queue.
    void awaitHandingOn() {
        // Once the chord has been let go, the server has sent its press. So the press is there
        // when the first call gets its turn on the thread that listens, and has been handed on
        // when the second one does.
        for (int i = 0; i < 2; ++i) {
            hotKeys->registerHotKey(support::wakeChord);
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
        chord = hotKeys->registerHotKey(support::wakeChord);
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

}  // namespace tavrel
