#include <filesystem>
#include <optional>

#include <QCoreApplication>

#include "app/Composition.h"
#include "platform/QueuedNotificationCenter.h"
#include "platform/guard/GuardProcess.h"
#include "platform/guard/GuardedLifecycle.h"
#include "platform/macos/ActivityAssertion.h"
#include "platform/macos/MacBackgroundQueue.h"
#include "platform/macos/MacHotKeys.h"
#include "platform/macos/MacReconfigurationReports.h"
#include "platform/macos/MacUserDefaults.h"
#include "platform/macos/MacWindowServer.h"
#include "platform/posix/SystemWallClock.h"
#include "platform/qt/QtMainQueue.h"

namespace tavrel {

namespace {

/// The guard is in the bundle, beside the application.
std::filesystem::path guardExecutable() {
    return std::filesystem::path(QCoreApplication::applicationDirPath().toStdString()) /
           "tavrel-guard";
}

}  // namespace

struct Composition::Parts {
    /// Before all that has a thread.
    MacWindowServer windowServer;
    MacReconfigurationReports reports{windowServer};
    MacUserDefaults userDefaults;
    SystemWallClock wallClock;
    ActivityAssertion activity{"Looks after the displays that are switched off"};
    /// The server itself reports to this process what the guard's process begins.
    guard::GuardedLifecycle guarded{
        windowServer, {.startGuard = [] { return guard::GuardProcess::start(guardExecutable()); }}};
    SwitchOffGate gate{guarded};
    QtMainQueue mainQueue;
    QueuedNotificationCenter notificationCenter{mainQueue};
    MacHotKeys hotKeys;
    std::optional<MacBackgroundQueue> backgroundQueue{std::in_place};
};

Composition::Composition() : parts_(std::make_unique<Parts>()) {}

Composition::~Composition() {
    // Jobs use all the other parts, and what is queued may be the last to hold something
    // that does.
    parts_->backgroundQueue.reset();
    parts_->mainQueue.dropTasks();
}

bool Composition::outlivesItsWindow() {
    return true;
}

Platform Composition::platform() {
    return {parts_->gate,
            parts_->windowServer,
            parts_->reports,
            parts_->userDefaults,
            parts_->wallClock,
            parts_->mainQueue,
            *parts_->backgroundQueue,
            parts_->notificationCenter};
}

HotKeys& Composition::hotKeys() {
    return parts_->hotKeys;
}
SwitchOffGate& Composition::switchOffGate() {
    return parts_->gate;
}
void Composition::endInGoodOrder() {
    parts_->guarded.goodbye();
}

}  // namespace tavrel
