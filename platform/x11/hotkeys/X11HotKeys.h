#pragma once

#include <memory>

#include "platform/HotKeys.h"
#include "platform/x11/connection/Connection.h"

namespace tavrel {

class MainQueue;

namespace x11 {
class HotKeyListener;
}

/// Hot keys by passive grabs on the root windows of an X server. The presses come in on a
/// thread and a connection of this object's own and are handed on through the main queue.
///
/// A chord follows its letter when the keyboard layout changes. When the server goes away
/// and comes back, chords still held are claimed anew.
class X11HotKeys final : public HotKeys {
public:
    /// Waits for the server at most as long as the options' patience. `mainQueue` must
    /// outlive this. A handle that outlives this stands for nothing any more.
    explicit X11HotKeys(MainQueue& mainQueue, const X11ServerOptions& options = {});
    ~X11HotKeys() override;

    std::unique_ptr<Handle> installEventHandler(Task pressed) override;
    /// Also null for a key code or modifiers other than those this application uses, and
    /// where the keyboard cannot type the chord.
    std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) override;

private:
    class Handlers;
    class HandlerHandle;
    class ChordHandle;

    /// The main thread's.
    std::shared_ptr<Handlers> handlers_;
    std::shared_ptr<x11::HotKeyListener> listener_;
};

}  // namespace tavrel
