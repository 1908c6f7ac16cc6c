#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/BackgroundQueue.h"
#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/HotKeys.h"
#include "platform/MainQueue.h"
#include "platform/ReconfigurationReports.h"
#include "platform/TrayHost.h"
#include "platform/UserDefaults.h"
#include "platform/Words.h"

namespace tavrel {

/// What differs between the window servers that the application runs on: which class fills
/// which interface there, and the customs of its desktop. Main thread only.
class System {
public:
    virtual ~System() = default;

    /// False where an application customarily goes on without its window, and shows it again
    /// when it is called to the front.
    virtual bool quitOnLastWindowClosed() const = 0;

    /// What the watchdog is told about which window server that is; empty where there is one only.
    virtual std::string windowServerName() const { return {}; }

    /// What texts for the user call this system and its keys.
    virtual Words words() const { return {}; }

    /// They live as long as this object.
    virtual DisplaySwitch& displaySwitch() = 0;
    virtual DisplayQueries& queries() = 0;
    virtual ReconfigurationReports& reports() = 0;
    virtual UserDefaults& userDefaults() = 0;

    /// Calls `unwritable` once, on any thread, when the user defaults cannot be written and are
    /// kept in memory: also when that was found out before. Never where the system keeps them.
    /// Null ends it: when the call returns, `unwritable` neither runs nor will.
    virtual void observeStore(std::function<void()> unwritable) = 0;

    /// All may use this object, and those that are given the queue use that, until they are
    /// destroyed.
    virtual std::unique_ptr<HotKeys> makeHotKeys(MainQueue& mainQueue) = 0;
    virtual std::unique_ptr<BackgroundQueue> makeBackgroundQueue() = 0;
    /// Null where an application without a window can always be reached.
    virtual std::unique_ptr<TrayHost> makeTrayHost(MainQueue& mainQueue) = 0;
};

/// The system for the window server that this session runs on.
///
/// Which one that is shows only at run time, because one system may offer several: hence an
/// interface and a choice, not another class for each build. A Mac has its own only.
std::unique_ptr<System> chooseSystem();

}  // namespace tavrel
