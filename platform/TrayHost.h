#pragma once

#include "platform/MainQueue.h"

namespace tavrel {

/// The place of the desktop where programs show small icons while they have no window: there
/// may be none, and it may come and go. Main thread only.
class TrayHost {
public:
    virtual ~TrayHost() = default;

    /// False until the desktop has said so.
    virtual bool isPresent() const = 0;

    /// Runs `changed` on the main thread each time `isPresent` has changed, and when another
    /// tray has taken the place of the last. Replaces who was told before; nullptr ends it.
    virtual void observe(Task changed) = 0;
};

}  // namespace tavrel
