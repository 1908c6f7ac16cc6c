#include "app/Composition.h"

#include <QCoreApplication>

#include "app/System.h"
#include "platform/NotificationCenter.h"
#include "platform/posix/SystemWallClock.h"
#include "platform/qt/QtMainQueue.h"
#include "watchdog/application/GuardedSwitch.h"
#include "watchdog/application/WatchdogProcess.h"

namespace tavrel {

namespace {

watchdog::SupervisorSetup supervisorSetup() {
    const auto folder = QCoreApplication::applicationDirPath().toStdString();
    return {.startWatchdog = [executable = watchdog::findWatchdog(folder)] {
        return watchdog::WatchdogProcess::start(executable);
    }};
}

}  // namespace

struct Composition::Parts {
    std::unique_ptr<System> system = chooseSystem();
    SystemWallClock wallClock;
    watchdog::GuardedSwitch guarded{system->displaySwitch(), supervisorSetup()};
    SwitchOffGate gate{guarded};
    QtMainQueue mainQueue;
    NotificationCenter notificationCenter{mainQueue};
    std::unique_ptr<HotKeys> hotKeys = system->makeHotKeys(mainQueue);
    std::unique_ptr<BackgroundQueue> backgroundQueue = system->makeBackgroundQueue();
};

Composition::Composition() : parts_(std::make_unique<Parts>()) {}

Composition::~Composition() {
    // While the other parts still exist: jobs use them, and so may what a queued task owns.
    parts_->backgroundQueue.reset();
    parts_->mainQueue.dropTasks();
}

bool Composition::quitOnLastWindowClosed() const {
    return parts_->system->quitOnLastWindowClosed();
}

Platform Composition::platform() {
    System& system = *parts_->system;
    return {.displaySwitch = parts_->gate,
            .queries = system.queries(),
            .reports = system.reports(),
            .userDefaults = system.userDefaults(),
            .wallClock = parts_->wallClock,
            .mainQueue = parts_->mainQueue,
            .backgroundQueue = *parts_->backgroundQueue,
            .notificationCenter = parts_->notificationCenter};
}

HotKeys& Composition::hotKeys() {
    return *parts_->hotKeys;
}

SwitchOffGate& Composition::switchOffGate() {
    return parts_->gate;
}

void Composition::endInGoodOrder() {
    parts_->guarded.goodbye();
}

}  // namespace tavrel
