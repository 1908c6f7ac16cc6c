#include "tests/simulation/World.h"

#include <algorithm>
#include <cmath>

#include "registry/DisplayRegistry.h"
#include "tests/watchdog/program/ScriptedChannel.h"
#include "watchdog/program/WatchdogService.h"

namespace tavrel::simulation {

namespace {

using namespace std::chrono_literals;
using WhenOff = SimulatedWindowServer::WhenOff;

const SimulatedDisplay panel{.id = 5, .builtIn = true};
constexpr std::array<DisplayID, 4> externals{1, 3, 77, 4'294'967'295U};
constexpr Delay convergenceTime = 3s;
constexpr Delay endOfSlowCall = 1s;
constexpr Delay quitTimeout = 90s;
constexpr Delay longestJob = 1h;

constexpr std::array clockSteps{-3600.0, -2.0, -0.3, 0.3, 2.0, 3600.0, 31 * 86400.0, -31 * 86400.0};

constexpr std::array corruptions{"",
                                 "[",
                                 "null",
                                 "{}",
                                 "[1]",
                                 R"([{"id":1,"isBuiltIn":true}])",
                                 "\xff",
                                 "[]x",
                                 R"([{"id":4294967296,"isBuiltIn":true,"lastSeenAt":1}])",
                                 R"([{"id":1,"isBuiltIn":true,"lastSeenAt":1e999}])"};

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

/// Whether a silent server keeps this from happening, or from being noticed.
bool happensAtTheServer(Event::Kind kind) {
    using Kind = Event::Kind;
    return kind == Kind::plug || kind == Kind::unplug || kind == Kind::lidClose ||
           kind == Kind::lidOpen || kind == Kind::outsideSwitch || kind == Kind::outsideAllOff ||
           kind == Kind::idleReport;
}

DisplayID external(std::uint32_t number) {
    return externals[number % externals.size()];
}

}  // namespace

World::World(std::uint64_t seed)
    : system_(seed, seed % 2 == 0 ? WhenOff::staysOnline : WhenOff::goesOffline),
      displaySwitch_(system_.windowServer, system_.scheduler, seed + 1),
      reports_(reportsWithLid_, system_.scheduler, seed + 2),
      queries_(queriesWithLid_, seed + 3) {
    begin({.whenOff = seed % 2 == 0 ? WhenOff::staysOnline : WhenOff::goesOffline,
           .hasPrivateList = seed / 2 % 2 == 0,
           .displays = {panel, {.id = externals[0]}, {.id = externals[1]}}});
}

World::World(const Setting& setting, Chooser& chooser)
    : system_(chooser, setting.whenOff),
      displaySwitch_(system_.windowServer, system_.scheduler, 0),
      reports_(reportsWithLid_, system_.scheduler, 0),
      queries_(queriesWithLid_, 0) {
    begin(setting);
}

void World::begin(const Setting& setting) {
    lastWord_.whileAwaited = [this] { displaySwitch_.awaitServer(); };
    displaySwitch_.setFaults({.delay = setting.switchDelay});
    system_.windowServer.setHasPrivateList(setting.hasPrivateList);
    for (const SimulatedDisplay& display : setting.displays) {
        plug(display);
    }
    system_.scheduler.setObserver([this] { invariants_.check(); });
    launch();
}

World::~World() {
    system_.scheduler.setObserver(nullptr);
    invariants_.watch(nullptr, nullptr);
    watchModel_.reset();
    controller_.reset();
    system_.scheduler.shutDown();
}

Platform World::platform() {
    const Platform whole = system_.platform();
    return {.displaySwitch = *noted_,
            .queries = *review_,
            .reports = reports_,
            .userDefaults = whole.userDefaults,
            .wallClock = whole.wallClock,
            .mainQueue = whole.mainQueue,
            .backgroundQueue = whole.backgroundQueue,
            .notificationCenter = whole.notificationCenter};
}

void World::launch() {
    gate_ = std::make_unique<SwitchOffGate>(displaySwitch_);
    review_ = std::make_unique<RescueReview>(*gate_, queries_, system_.scheduler.mainQueue());
    noted_ = std::make_unique<NotedSwitch>(*review_, invariants_);
    delegate_ = std::make_unique<AppDelegate>(platform(), system_.hotKeys);
    delegate_->applicationDidFinishLaunching();
    controller_ = DisplayController::create(platform());
    watchModel_ = std::make_unique<WatchModel>(system_, reports_, controller_, invariants_);
    invariants_.watch(controller_, watchModel_.get());
    advance(Delay::zero());
}

void World::quit() {
    gate_->close();
    // While it waits, the main thread restores nothing; at the end it switches on everything.
    invariants_.noteHangBegins();
    const bool isIdle = blockMain(quitTimeout, [this] { return gate_->isIdle(); });
    invariants_.noteHangEnds();
    if (!isIdle) {
        invariants_.fail("a switch was still running a minute after quitting");
        return;
    }
    const std::uint64_t refusedBefore = displaySwitch_.refusedWakes();
    delegate_->applicationWillTerminate();
    const bool refused = displaySwitch_.refusedWakes() != refusedBefore;
    // Not what jobs store after that: a process would not have lived to see it.
    const StoredModel remembered = invariants_.stored();
    invariants_.watch(nullptr, nullptr);
    watchModel_.reset();
    controller_.reset();
    // A process ends with its jobs; here they would go on in the next session.
    blockMain(longestJob, [&] { return system_.scheduler.pendingBackgroundJobs() == 0; });
    // No task of this session may run after the next one has replaced its parts.
    system_.scheduler.dropMainTasks();
    if (!refused) {
        for (const auto& [id, lastSeenAt] : remembered) {
            const SimulatedDisplay* display = system_.windowServer.find(id);
            if (display != nullptr && display->connected && !display->enabled) {
                invariants_.fail("display " + std::to_string(id) + " is off after quitting");
            }
        }
    }
    advance(Delay::zero());
    system_.windowServer.takeChanges();
}

bool World::blockMain(Delay limit, const std::function<bool()>& done) {
    return system_.scheduler.advanceWithMainBlocked(limit, [&] {
        invariants_.checkStore();
        return done();
    });
}

void World::advance(Delay duration) {
    system_.scheduler.advance(duration);
    invariants_.check();
    for (const auto& [display, enabled] : system_.windowServer.takeChanges()) {
        log_.add(now(), "asked " + std::to_string(display) + (enabled ? " on" : " off"));
    }
}

void World::apply(const Event& event) {
    advance(event.gap);
    if (violation().has_value()) {
        return;
    }
    log_.add(now(), describe(event));
    carryOut(event);
    advance(Delay::zero());
}

void World::carryOut(const Event& event) {
    using Kind = Event::Kind;
    SimulatedWindowServer& server = system_.windowServer;
    if (lastWord_.isSilent() && happensAtTheServer(event.kind)) {
        return;
    }
    switch (event.kind) {
        case Kind::userSwitch:
            return userSwitch(event);
        case Kind::userRefresh:
            return controller_->refresh(std::nullopt);
        case Kind::userWakeAll:
            return controller_->wakeAll();
        case Kind::hotKey:
            return system_.hotKeys.press();
        case Kind::plug:
            return plug({.id = external(event.a), .enabled = event.b % 4 != 0});
        case Kind::unplug:
            return server.disconnect(external(event.a));
        case Kind::lidClose:
            return server.disconnect(panel.id);
        case Kind::lidOpen:
            return plug(panel);
        case Kind::lidCloseUnseen:
            return system_.lid.close();
        case Kind::lidOpenUnseen:
            return system_.lid.open();
        case Kind::outsideSwitch:
            return server.switchFromOutside(event.a % 3 == 0 ? panel.id : external(event.a),
                                            event.b % 3 == 0);
        case Kind::outsideAllOff:
            return switchAllOff();
        case Kind::idleReport:
            return server.report(panel.id, event.a & 0x1fff);
        case Kind::startFaults:
            return startFaults(event);
        case Kind::serverFallsSilent:
            return setSilent(true);
        case Kind::serverSpeaks:
            return setSilent(false);
        case Kind::slowServer:
            return slowServer(event);
        case Kind::stopFaults:
            return stopFaults();
        case Kind::hangApplication:
            return hangApplication(std::chrono::milliseconds(event.a % 30'000));
        case Kind::wipeRegistry:
            system_.userDefaults.remove(DisplayRegistry::storageKey);
            return invariants_.forgetStore();
        case Kind::corruptRegistry:
            return corruptRegistry(event.a);
        case Kind::lockStore:
            return system_.userDefaults.setWritable(false);
        case Kind::unlockStore:
            return system_.userDefaults.setWritable(true);
        case Kind::stepClock:
            return system_.wallClock.step(clockSteps[event.a % clockSteps.size()]);
        case Kind::quitAndRestart:
            quit();
            if (!violation().has_value()) {
                launch();
            }
            return;
        case Kind::converge:
            return converge();
        case Kind::refuseSwitches:
        case Kind::loseReports:
        case Kind::loseLists:
            return startOneFault(event.kind);
        case Kind::wait:
            return;
    }
}

void World::userSwitch(const Event& event) {
    if (controller_->displays().empty()) {
        return;
    }
    const DisplayDevice display = controller_->displays()[event.a % controller_->displays().size()];
    const bool isOn = event.b % 8 == 0 ? display.isOn : !display.isOn;

    // The rule a second time, from what the server knows.
    const auto& listed = controller_->displays();
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

void World::switchAllOff() {
    for (const SimulatedDisplay& display : std::vector(system_.windowServer.desk())) {
        system_.windowServer.switchFromOutside(display.id, false);
    }
}

void World::startFaults(const Event& event) {
    queries_.setListFailures(event.a / 64 % 50);
    displaySwitch_.setFaults(
        {.refusals = event.a % 60, .latency = std::chrono::milliseconds(event.b % 750)});
    reports_.setFaults({.lost = event.b / 1024 % 80,
                        .doubled = event.b / 131072 % 50,
                        .late = event.a / 4096 % 80,
                        .delay = 3s});
    system_.windowServer.setHasOnlineList(event.b % 4 != 0);
}

void World::slowServer(const Event& event) {
    constexpr std::chrono::milliseconds slowest = 12s;
    displaySwitch_.setFaults({.refusals = event.a % 20,
                              .latency = std::chrono::milliseconds(event.b) % slowest,
                              .lateAnswers = event.a / 64 % 50});
    invariants_.allowForSlowness(slowest);
}

void World::setSilent(bool isSilent) {
    if (isSilent && !lastWord_.isSilent()) {
        std::vector<DisplayID> displays;
        for (const SimulatedDisplay& display : system_.windowServer.desk()) {
            displays.push_back(display.id);
        }
        lastWord_.fallSilent(displays);
        invariants_.allowForSlowness(25s);
    } else if (!isSilent) {
        lastWord_.speak();
    }
    displaySwitch_.setSilent(isSilent);
}

void World::hangApplication(Delay duration) {
    using watchdog::WatchdogService;
    const auto never = [] { return false; };
    invariants_.noteHangBegins();
    const Delay untilNoticed = std::min<Delay>(duration, WatchdogService::silenceLimit);
    blockMain(untilNoticed, never);
    Delay looked{0};
    for (; untilNoticed + looked < duration && !lastWord_.isSilent();
         looked += WatchdogService::lookInterval) {
        watchdogLooks();
        blockMain(WatchdogService::lookInterval, never);
    }
    if (looked > Delay::zero() && !invariants_.somethingIsOn() && invariants_.somethingIsListed()) {
        invariants_.fail("nothing is on though the watchdog looks after a hung application");
    }
    invariants_.noteHangEnds();
    watchModel_->noteHang();
}

/// One look of the real watchdog, which has heard nothing for too long.
void World::watchdogLooks() {
    watchdog::ScriptedChannel silentApplication(
        {watchdog::NoMessage::timedOut,
         watchdog::Message{.kind = watchdog::Message::Kind::goodbye}});
    watchdog::WatchdogService(system_.windowServer, system_.windowServer, silentApplication,
                              [](std::chrono::milliseconds) {})
        .run();
}

void World::startOneFault(Event::Kind kind) {
    using Kind = Event::Kind;
    stopFaults();
    if (kind == Kind::refuseSwitches) {
        displaySwitch_.setFaults({.refusals = 100});
    } else if (kind == Kind::loseReports) {
        reports_.setFaults({.lost = 100});
    } else {
        queries_.setListFailures(100);
        system_.windowServer.setHasOnlineList(false);
    }
    fault_ = kind;
}

void World::stopFaults() {
    fault_.reset();
    displaySwitch_.setFaults({});
    reports_.setFaults({});
    queries_.setListFailures(0);
    system_.windowServer.setHasOnlineList(true);
}

void World::corruptRegistry(std::uint32_t variant) {
    system_.userDefaults.replaceFromOutside(DisplayRegistry::storageKey,
                                            corruptions[variant % corruptions.size()]);
    invariants_.forgetStore();
}

void World::converge() {
    stopFaults();
    setSilent(false);
    system_.userDefaults.setWritable(true);
    system_.lid.open();
    // A call that has begun ends first.
    advance(endOfSlowCall);
    const bool couldBeUsable = invariants_.someRememberedIsConnected();
    advance(convergenceTime);
    // After a step of the clock by a month the registry forgets displays, by its own rule, and
    // what is forgotten is not restored.
    if (couldBeUsable && invariants_.someRememberedIsConnected() &&
        !invariants_.someRememberedIsUsable()) {
        invariants_.fail("nothing usable three seconds after the faults stopped");
    }
}

}  // namespace tavrel::simulation
