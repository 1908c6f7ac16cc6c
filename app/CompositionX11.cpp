#include <QCoreApplication>
#include <filesystem>
#include <optional>

#include "app/Composition.h"
#include "platform/QueuedNotificationCenter.h"
#include "platform/guard/GuardProcess.h"
#include "platform/guard/GuardedLifecycle.h"
#include "platform/posix/DefaultsPath.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/posix/SystemWallClock.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/x11/X11HotKeys.h"
#include "platform/x11/X11ReconfigurationReports.h"
#include "platform/x11/X11WindowServer.h"

namespace tavrel {

namespace {

/// The guard is installed beside the application.
std::filesystem::path guardExecutable() {
    return std::filesystem::path(QCoreApplication::applicationDirPath().toStdString()) /
           "tavrel-guard";
}

}  // namespace

struct Composition::Parts {
    FileUserDefaults userDefaults{defaultsPath()};
    SystemWallClock wallClock;
    X11ReconfigurationReports reports;
    X11WindowServer windowServer{userDefaults, &reports};
    guard::GuardedLifecycle guarded{
        windowServer,
        {.startGuard = [executable =
                            guardExecutable()] { return guard::GuardProcess::start(executable); },
         .willSwitch = [this](DisplayID display,
                              bool enabled) { windowServer.announceChange(display, enabled); }}};
    SwitchOffGate gate{guarded};
    QtMainQueue mainQueue;
    QueuedNotificationCenter notificationCenter{mainQueue};
    X11HotKeys hotKeys{mainQueue};
    std::optional<ThreadBackgroundQueue> backgroundQueue{std::in_place};
};

Composition::Composition() : parts_(std::make_unique<Parts>()) {}

Composition::~Composition() {
    // Jobs use all the other parts, and what is queued may be the last to hold something
    // that does.
    parts_->backgroundQueue.reset();
    parts_->mainQueue.dropTasks();
}

bool Composition::outlivesItsWindow() {
    return false;
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
