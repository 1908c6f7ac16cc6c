#pragma once

#include <memory>

#include "platform/HotKeys.h"

namespace tavrel {

/// Hot keys of the Carbon event manager, on the application's event target. The manager
/// keeps a pressed hot key from the focused window, so a menu's equal shortcut does not
/// fire as well.
///
/// A chord that another program holds exclusively is accepted all the same, and never fires; a
/// program is not told. What is refused is a chord that this process has registered already.
class MacHotKeys final : public HotKeys {
public:
    /// One at a time: null while the handle of another is held.
    std::unique_ptr<Handle> installEventHandler(Task pressed) override;
    std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) override;
    /// Whether a registration that was accepted is still there; whether it fires, nobody says.
    bool isHeld() const override;
    /// Always null.
    std::unique_ptr<Handle> observeHeld(Task changed) override;

private:
    /// One for each registered chord. Shared with the handles, which may outlive this.
    std::shared_ptr<int> registrations_ = std::make_shared<int>(0);
};

}  // namespace tavrel
