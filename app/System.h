#pragma once

#include <memory>

#include "platform/BackgroundQueue.h"
#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/HotKeys.h"
#include "platform/MainQueue.h"
#include "platform/ReconfigurationReports.h"
#include "platform/UserDefaults.h"

namespace tavrel {

/// What is another one on each system the application runs on. Main thread only.
class System {
public:
    /// The one this application is built for. Whoever defines it says what fills which
    /// interface there.
    static std::unique_ptr<System> make();

    virtual ~System() = default;

    /// Whether it is the custom here that an application goes on without its window, and
    /// shows it again when it is called to the front.
    virtual bool outlivesItsWindow() const = 0;

    /// They live as long as this object.
    virtual DisplaySwitch& displaySwitch() = 0;
    virtual DisplayQueries& queries() = 0;
    virtual ReconfigurationReports& reports() = 0;
    virtual UserDefaults& userDefaults() = 0;

    /// Both may use this object, and the hot keys the queue, until they are destroyed.
    virtual std::unique_ptr<HotKeys> makeHotKeys(MainQueue& mainQueue) = 0;
    virtual std::unique_ptr<BackgroundQueue> makeBackgroundQueue() = 0;
};

}  // namespace tavrel
