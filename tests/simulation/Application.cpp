#include "tests/simulation/Application.h"

#include <algorithm>
#include <map>

namespace tavrel::simulation {

namespace {

using namespace std::chrono_literals;

/// More than all the switches in a row that can be waiting for a server that answers nobody: two
/// for each display, half a minute each.
constexpr Delay quitTimeout = 600s;
/// An application that takes longer ends without having switched on what is off.
constexpr Delay longestQuit = 10s;
constexpr Delay longestJob = 1h;
/// How long a helper that does not answer is waited for while a display is usable.
constexpr Delay longestTimeout = 30s;

/// Tells the invariants of each request to switch a display on.
class NotedSwitch : public DisplaySwitch {
public:
    NotedSwitch(DisplaySwitch& inner, Invariants& invariants)
        : inner_(inner), invariants_(invariants) {}

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        if (enabled) {
            invariants_.noteEnableRequest(display);
        }
        return inner_.setDisplayEnabled(display, enabled);
    }

private:
    DisplaySwitch& inner_;
    Invariants& invariants_;
};

}  // namespace

Application::Application(const Room& room, Process process, bool hasHelper)
    : room_(room),
      process_(process),
      hasHelper_(hasHelper),
      notificationCenter_(room.system.scheduler.mainQueue(process)),
      invariants_(room.system, room.log, process == Process::first ? "" : "second: ") {}

Application::~Application() {
    end();
}

void Application::end() {
    invariants_.watch(nullptr, nullptr);
    watchModel_.reset();
    controller_.reset();
}

Platform Application::platform() {
    const Platform whole = room_.system.platform();
    return {.displaySwitch = *noted_,
            .queries = *review_,
            .reports = room_.reports,
            .userDefaults = whole.userDefaults,
            .wallClock = whole.wallClock,
            .mainQueue = room_.system.scheduler.mainQueue(process_),
            .backgroundQueue = whole.backgroundQueue,
            .notificationCenter = notificationCenter_};
}

void Application::launch() {
    SimulatedScheduler& scheduler = room_.system.scheduler;
    DisplaySwitch* changes = &room_.displaySwitch;
    if (hasHelper_) {
        guarded_ =
            std::make_unique<GuardedLine>(room_.displaySwitch, room_.helpersQueries, scheduler);
        changes = guarded_.get();
    }
    gate_ = std::make_unique<SwitchOffGate>(*changes);
    review_ = std::make_unique<RescueReview>(*gate_, room_.queries, scheduler.mainQueue(process_));
    noted_ = std::make_unique<NotedSwitch>(*review_, invariants_);
    delegate_ = std::make_unique<AppDelegate>(platform(), hotKeys_);
    delegate_->applicationDidFinishLaunching();
    controller_ = DisplayController::create(platform());
    watchModel_ = std::make_unique<WatchModel>(room_.system, scheduler.mainQueue(process_),
                                               room_.reports, controller_, invariants_);
    // Others may have written it since the last session.
    invariants_.forgetStore();
    invariants_.watch(controller_, watchModel_.get());
}

void Application::quit() {
    SimulatedScheduler& scheduler = room_.system.scheduler;
    gate_->close();
    if (guarded_ != nullptr) {
        guarded_->hurry();
        guarded_->handOver(delegate_->inactiveDisplays());
    }
    // While it waits, the main thread restores nothing; at the end it switches on everything.
    invariants_.noteHangBegins();
    const bool isIdle = blockMain(quitTimeout, [this] { return gate_->waitUntilIdle(0ms); });
    invariants_.noteHangEnds();
    if (!isIdle) {
        invariants_.fail("a switch was still running minutes after quitting");
        return;
    }
    const std::uint64_t refusedBefore = room_.displaySwitch.refusedWakes();
    const Delay waitedBefore = guarded_ == nullptr ? Delay::zero() : guarded_->waitedInVain();
    delegate_->applicationWillTerminate();
    const auto moment = room_.helpersQueries.now();
    // A server that serves nobody is waited for, and so is one that cannot say what is on.
    if (guarded_ != nullptr && guarded_->waitedInVain() - waitedBefore > longestQuit &&
        moment->isCurrent() && moment->onlineDisplays().has_value()) {
        invariants_.fail("quitting waits for a helper that does not answer");
    }
    const bool refused = room_.displaySwitch.refusedWakes() != refusedBefore;
    // Not what jobs store after that: a process would not have lived to see it.
    StoredModel remembered = invariants_.stored();
    std::map<DisplayID, std::size_t> switchOffs;
    for (const auto& [id, lastSeenAt] : remembered) {
        switchOffs[id] = room_.server.switchOffs(id);
    }
    end();
    // A process ends with its jobs; here they would go on in the next session.
    blockMain(longestJob, [&] { return scheduler.pendingBackgroundJobs() == 0; });
    // No task of this session may run after the next one has replaced its parts.
    scheduler.dropMainTasks(process_);
    letHelperGo();
    // Meanwhile another copy may have switched off what its user wants to be off.
    std::erase_if(remembered, [&](const auto& record) {
        return room_.server.switchOffs(record.first) != switchOffs[record.first];
    });
    if (!refused) {
        checkThatAllIsOn(remembered);
    }
}

void Application::letHelperGo() {
    if (guarded_ == nullptr) {
        return;
    }
    if (!guarded_->isIdle()) {
        invariants_.fail("requests are waiting though nothing is left to be done");
    }
    guarded_->goodbye();
}

void Application::checkThatAllIsOn(const StoredModel& remembered) {
    for (const auto& [id, lastSeenAt] : remembered) {
        const SimulatedDisplay* display = room_.system.windowServer.find(id);
        if (display != nullptr && display->connected && !display->enabled) {
            invariants_.fail("display " + std::to_string(id) + " is off after quitting");
        }
    }
}

bool Application::blockMain(Delay limit, const std::function<bool()>& done) {
    const auto checkAndLook = [&] {
        invariants_.checkStore();
        return done();
    };
    return room_.system.scheduler.advanceWithMainBlocked(limit, checkAndLook, process_);
}

void Application::stopHelper(Stop stop) {
    if (guarded_ == nullptr) {
        return;
    }
    guarded_->stopHelper(stop);
    if (stop != Stop::nowhere) {
        invariants_.allowForSlowness(longestTimeout);
    }
}

void Application::flipAllSwitches() {
    const auto rows = static_cast<std::uint32_t>(controller_->displays().size());
    for (std::uint32_t row = 0; row < rows; ++row) {
        flipSwitch(row, 1);
    }
}

void Application::flipSwitch(std::uint32_t row, std::uint32_t dice) {
    const auto& listed = controller_->displays();
    if (listed.empty()) {
        return;
    }
    const DisplayDevice display = listed[row % listed.size()];
    const bool isOn = dice % 8 == 0 ? display.isOn : !display.isOn;

    // The rule a second time, from what the server knows.
    const bool otherIsLive = std::any_of(listed.begin(), listed.end(), [&](const auto& other) {
        return other.id() != display.id() && invariants_.isLive(other.displayID());
    });
    const bool shouldBe = !display.isBusy && display.isOn != isOn && (isOn || otherIsLive);

    controller_->set(display, isOn);
    const bool accepted =
        controller_->statusMessage() == (isOn ? "Waking " : "Turning off ") + display.name() + "…";
    if (shouldBe || display.isOn != isOn) {
        invariants_.checkSwitchRequest(accepted && !display.isBusy, shouldBe, display, isOn);
    }
    invariants_.noteSuppressionMovedByUser();
}

}  // namespace tavrel::simulation
