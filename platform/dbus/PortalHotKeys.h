#pragma once

#include <memory>
#include <string>

#include "platform/HotKeys.h"

namespace tavrel {

/// A hot key by the desktop's portal, which asks the user: under Wayland no program may listen
/// to keys on its own. The user may bind other keys than those that were wished for.
///
/// Talks to the portal on a thread and a connection of its own, and passes presses on through
/// the main queue.
class PortalHotKeys final : public HotKeys {
public:
    struct Options {
        /// The session's bus, as the bus libraries write it.
        std::string busAddress;
        /// Who wants the hot key.
        std::string applicationId;
        /// What it does, for the user to read.
        std::string description;
    };

    /// `mainQueue` must outlive this. A handle may outlive this, and does nothing then.
    PortalHotKeys(MainQueue& mainQueue, Options options);
    ~PortalHotKeys() override;

    /// One at a time: null while the handle of another is held.
    std::unique_ptr<Handle> installEventHandler(Task pressed) override;
    /// Returns at once, whatever the portal does. One at a time: null while the handle of
    /// another is held. Also null for a key code or modifiers other than those this application
    /// uses. Throws std::system_error when no thread can be started.
    std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) override;
    bool isHeld() const override;
    /// One at a time: null while the handle of another is held.
    std::unique_ptr<Handle> observeHeld(Task changed) override;
    std::string boundTo() const override;
    bool desktopDecides() const override { return true; }

private:
    struct State;
    class TaskHandle;
    class ChordHandle;
    struct Listener;

    MainQueue& mainQueue_;
    const Options options_;
    /// The main thread's.
    const std::shared_ptr<State> state_;
};

}  // namespace tavrel
