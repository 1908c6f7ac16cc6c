#pragma once

#include <memory>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/HotKeys.h"
#include "platform/Platform.h"

namespace tavrel {

/// What happens at the application's start and end: it registers the global hot key, and at
/// the end it switches every remembered display on. Main thread only.
///
/// It does not know the controller; the hot key reaches that as a notification.
class AppDelegate {
public:
    /// Both must outlive the delegate.
    AppDelegate(const Platform& platform, HotKeys& hotKeys);

    /// To be called once, after launch. Goes on without the hot key when it cannot be
    /// registered.
    void applicationDidFinishLaunching();

    /// Every remembered display that is not active, in the registry's order.
    std::vector<DisplayID> inactiveDisplays() const;

    /// To be called once, just before the process exits: enables every remembered display
    /// that is not active, one after the other, then releases the hot key.
    void applicationWillTerminate();

private:
    const Platform platform_;
    HotKeys& hotKeys_;
    std::unique_ptr<HotKeys::Handle> hotKeyRef_;
    std::unique_ptr<HotKeys::Handle> eventHandlerRef_;
};

}  // namespace tavrel
