#pragma once

#include <memory>

#include "platform/HotKeys.h"
#include "platform/x11/connection/Connection.h"

namespace tavrel {

class MainQueue;

namespace x11 {
class HotKeyListener;
}

/// A hot key by passive grabs on the root windows of an X server. Presses arrive on a thread
/// and a connection of this object's own and are passed on through the main queue.
///
/// The chord follows its letter when the keyboard layout changes; where no key has the letter,
/// the key in its usual place serves. A chord that cannot be had, because another program
/// holds it or the keyboard has no key for a modifier, is tried for again every few seconds
/// and whenever the keyboard changes. When the server goes away and comes back, the chord is
/// claimed anew.
class X11HotKeys final : public HotKeys {
public:
    /// Blocks at most for the options' timeout. `mainQueue` must outlive this. A handle may
    /// outlive this, and does nothing then.
    explicit X11HotKeys(MainQueue& mainQueue, const X11ServerOptions& options = {});
    ~X11HotKeys() override;

    /// One at a time: null while the handle of another is held.
    std::unique_ptr<Handle> installEventHandler(Task pressed) override;
    /// One at a time: null while the handle of another is held. Also null for a key code or
    /// modifiers other than those this application uses.
    std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) override;
    bool isHeld() const override;
    /// One at a time: null while the handle of another is held.
    std::unique_ptr<Handle> observeHeld(Task changed) override;

private:
    class TaskHandle;
    class ChordHandle;

    // What a press and a change of `isHeld` do; empty without a handler. The main thread's.
    std::shared_ptr<Task> pressed_ = std::make_shared<Task>();
    std::shared_ptr<Task> heldChanged_ = std::make_shared<Task>();
    std::shared_ptr<x11::HotKeyListener> listener_;
};

}  // namespace tavrel
