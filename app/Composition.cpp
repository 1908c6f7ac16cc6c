#include "app/Composition.h"

#include <chrono>
#include <utility>
#include <vector>

#include <QCoreApplication>

#include "app/System.h"
#include "platform/LastDisplayGate.h"
#include "platform/LeftOffRecovery.h"
#include "platform/NotificationCenter.h"
#include "platform/RescueReview.h"
#include "platform/StoredFirst.h"
#include "platform/WallClock.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/qt/QtMainQueue.h"
#include "watchdog/application/GuardedSwitch.h"
#include "watchdog/application/WatchdogProcess.h"

namespace tavrel {

namespace {

constexpr std::chrono::seconds heartbeatInterval{1};
/// Until then the processors are wanted for the window.
constexpr std::chrono::milliseconds watchdogStart{150};

watchdog::SupervisorSetup supervisorSetup(const System& system) {
    const auto folder = QCoreApplication::applicationDirPath().toStdString();
    const auto start = [executable = watchdog::findWatchdog(folder),
                        windowServer = system.windowServerName()](const auto& first) {
        return watchdog::WatchdogProcess::start(executable, first, windowServer);
    };
    return {.startWatchdog = start, .firstStart = watchdogStart};
}

/// What was switched off here is remembered until it is on again. Empty where the window server
/// does that itself.
std::vector<DisplayID> rememberedDisplays(UserDefaults& store) {
    std::vector<DisplayID> displays;
    for (const layout::RememberedOutput& each : layout::RememberedOutputs(store).all()) {
        displays.push_back(each.display);
    }
    return displays;
}

}  // namespace

struct Composition::Parts {
    std::unique_ptr<System> system = chooseSystem();
    SystemWallClock wallClock;
    watchdog::GuardedSwitch guarded{system->displaySwitch(), system->queries(),
                                    supervisorSetup(*system)};
    StoredFirst storedFirst{guarded, system->userDefaults()};
    LastDisplayGate lastDisplay{storedFirst, system->queries()};
    SwitchOffGate gate{lastDisplay};
    QtMainQueue mainQueue;
    /// On the main thread: when that hangs, the watchdog hears nothing any more.
    std::unique_ptr<RepeatingTimer> heartbeat =
        mainQueue.repeat(heartbeatInterval, [this] { guarded.beat(); });
    LeftOffRecovery leftOff{gate, system->queries(),
                            [this] { return rememberedDisplays(system->userDefaults()); }};
    RescueReview review{gate, leftOff, mainQueue};
    NotificationCenter notificationCenter{mainQueue};
    std::unique_ptr<HotKeys> hotKeys = system->makeHotKeys(mainQueue);
    std::unique_ptr<BackgroundQueue> backgroundQueue = system->makeBackgroundQueue();
};

Composition::Composition() : parts_(std::make_unique<Parts>()) {}

Composition::~Composition() {
    // The last writes to the store may fail when the main queue has gone.
    parts_->system->observeStore(nullptr);
    // While the other parts still exist: jobs use them, and so may what a queued task owns.
    parts_->backgroundQueue.reset();
    parts_->mainQueue.dropTasks();
}

bool Composition::quitOnLastWindowClosed() const {
    return parts_->system->quitOnLastWindowClosed();
}

Platform Composition::platform() {
    System& system = *parts_->system;
    return {.displaySwitch = parts_->review,
            .queries = parts_->review,
            .reports = system.reports(),
            .userDefaults = system.userDefaults(),
            .wallClock = parts_->wallClock,
            .mainQueue = parts_->mainQueue,
            .backgroundQueue = *parts_->backgroundQueue,
            .notificationCenter = parts_->notificationCenter,
            .words = system.words()};
}

HotKeys& Composition::hotKeys() {
    return *parts_->hotKeys;
}

SwitchOffGate& Composition::switchOffGate() {
    return parts_->gate;
}

std::unique_ptr<TrayHost> Composition::makeTrayHost() {
    return parts_->system->makeTrayHost(parts_->mainQueue);
}

void Composition::observeStore(Task unwritable) {
    parts_->system->observeStore(
        [&queue = parts_->mainQueue, task = std::move(unwritable)] { queue.async(task); });
}

void Composition::runDueTasks() {
    parts_->mainQueue.runDueTasks();
}

void Composition::beginToEnd() {
    parts_->guarded.hurry();
}

QuitHelp Composition::quitHelp() {
    watchdog::GuardedSwitch& guarded = parts_->guarded;
    return {.handOver = [&guarded](const auto& displays) { guarded.handOver(displays); },
            .isHandedOver = [&guarded] { return guarded.isHandedOver(); },
            .changesEnded = [&guarded] { return guarded.changesEnded(); },
            .finish = [&guarded] { guarded.goodbye(); }};
}

}  // namespace tavrel
