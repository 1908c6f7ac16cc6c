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
/// The chord follows its letter when the keyboard layout changes. When the server goes away
/// and comes back, a chord still held is claimed anew.
class X11HotKeys final : public HotKeys {
public:
    /// Blocks at most for the options' timeout. `mainQueue` must outlive this. A handle may
    /// outlive this, and does nothing then.
    explicit X11HotKeys(MainQueue& mainQueue, const X11ServerOptions& options = {});
    ~X11HotKeys() override;

    /// One at a time: null while the handle of another is held.
    std::unique_ptr<Handle> installEventHandler(Task pressed) override;
    /// One at a time: null while the handle of another is held. Also null for a key code or
    /// modifiers other than those this application uses, and where the keyboard cannot type
    /// the chord.
    std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) override;

private:
    class HandlerHandle;
    class ChordHandle;

    /// What a press does; empty without a handler. The main thread's.
    std::shared_ptr<Task> pressed_ = std::make_shared<Task>();
    std::shared_ptr<x11::HotKeyListener> listener_;
};

}  // namespace tavrel
