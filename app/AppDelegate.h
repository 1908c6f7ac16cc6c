#pragma once

#include <memory>

#include "platform/HotKeys.h"
#include "platform/Platform.h"

namespace tavrel {

/// What happens around the application's life: the global hot key while it runs, and at
/// its end every remembered display on again. Main thread only.
///
/// It never touches the controller; the hot key reaches it as a notification.
class AppDelegate {
public:
    /// Both must outlive the delegate.
    AppDelegate(const Platform& platform, HotKeys& hotKeys);

    /// To be called once, after launch. A hot key that cannot be had is done without.
    void applicationDidFinishLaunching();

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
