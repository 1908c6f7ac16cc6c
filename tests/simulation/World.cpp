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
constexpr Delay longestDarkness = 5s;

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

using Kind = Event::Kind;

/// Whether a silent server keeps this from happening, or from being noticed.
bool happensAtTheServer(Kind kind) {
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
      displaySwitch_(serverSwitch_, system_.scheduler, seed + 1),
      reports_(reportsWithLid_, system_.scheduler, seed + 2),
      queries_(queriesWithLid_, seed + 3),
      first_(room(), Application::Process::first, true),
      second_(room(), Application::Process::second, true) {
    begin({.whenOff = seed % 2 == 0 ? WhenOff::staysOnline : WhenOff::goesOffline,
           .hasPrivateList = seed / 2 % 2 == 0,
           .displays = {panel, {.id = externals[0]}, {.id = externals[1]}}});
}

World::World(const Setting& setting, Chooser& chooser)
    : system_(chooser, setting.whenOff),
      displaySwitch_(serverSwitch_, system_.scheduler, 0),
      reports_(reportsWithLid_, system_.scheduler, 0),
      queries_(queriesWithLid_, 0),
      first_(room(), Application::Process::first, false),
      second_(room(), Application::Process::second, false) {
    begin(setting);
}

Room World::room() {
    return {.system = system_,
            .server = serverSwitch_,
            .displaySwitch = displaySwitch_,
            .queries = queries_,
            .helpersQueries = lastWord_,
            .reports = reports_,
            .log = log_};
}

void World::begin(const Setting& setting) {
    lastWord_.whileAwaited = [this] { displaySwitch_.awaitServer(); };
    displaySwitch_.setFaults({.delay = setting.switchDelay});
    system_.windowServer.setHasPrivateList(setting.hasPrivateList);
    for (const SimulatedDisplay& display : setting.displays) {
        plug(display);
    }
    system_.scheduler.setObserver([this] { check(); });
    launch(first_);
}

World::~World() {
    system_.scheduler.setObserver(nullptr);
    first_.end();
    second_.end();
    system_.scheduler.shutDown();
}

std::optional<std::string> World::violation() const {
    const auto& first = first_.invariants().violation();
    return first.has_value() ? first : second_.invariants().violation();
}

void World::launch(Application& application) {
    application.launch();
    advance(Delay::zero());
}

void World::quit(Application& application) {
    application.quit();
    if (!violation().has_value()) {
        advance(Delay::zero());
        system_.windowServer.takeChanges();
    }
}

void World::quitAndRestart() {
    quit(first_);
    if (!violation().has_value()) {
        launch(first_);
    }
}

void World::check() {
    first_.invariants().check();
    if (second_.isRunning()) {
        second_.invariants().check();
    }
    if (serverSwitch_.leftNothingOn()) {
        first_.invariants().fail("the last usable display was switched off");
    }
}

void World::advance(Delay duration) {
    system_.scheduler.advance(duration);
    check();
    for (const auto& [display, enabled] : system_.windowServer.takeChanges()) {
        log_.add(now(), "asked " + std::to_string(display) + (enabled ? " on" : " off"));
    }
}

Application& World::chosen(const Event& event) {
    return second_.isRunning() && event.b / 65536 % 2 == 0 ? second_ : first_;
}

void World::forgetStore() {
    first_.invariants().forgetStore();
    second_.invariants().forgetStore();
}

void World::allowForSlowness(Delay longest) {
    first_.invariants().allowForSlowness(longest);
    second_.invariants().allowForSlowness(longest);
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
    SimulatedWindowServer& server = system_.windowServer;
    if (lastWord_.isSilent() && happensAtTheServer(event.kind)) {
        return;
    }
    switch (event.kind) {
        case Kind::userSwitch:
            return chosen(event).flipSwitch(event.a, event.b);
        case Kind::userFlipsAll:
            return chosen(event).flipAllSwitches();
        case Kind::userRefresh:
            return chosen(event).controller().refresh(std::nullopt);
        case Kind::userWakeAll:
            return chosen(event).controller().wakeAll();
        case Kind::hotKey:
            return first_.pressHotKey();
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
            return hangApplication(chosen(event), std::chrono::milliseconds(event.a % 30'000));
        case Kind::stopHelper:
            return chosen(event).stopHelper(event.a % 2 == 0 ? Stop::beforeItReads
                                                             : Stop::beforeItAnswers);
        case Kind::helperGoesOn:
            return chosen(event).stopHelper(Stop::nowhere);
        case Kind::secondLaunches:
            return second_.isRunning() ? void() : launch(second_);
        case Kind::secondQuits:
            return second_.isRunning() ? quit(second_) : void();
        case Kind::wipeRegistry:
            system_.userDefaults.remove(DisplayRegistry::storageKey);
            return forgetStore();
        case Kind::corruptRegistry:
            return corruptRegistry(event.a);
        case Kind::lockStore:
            return system_.userDefaults.setWritable(false);
        case Kind::unlockStore:
            return system_.userDefaults.setWritable(true);
        case Kind::stepClock:
            return system_.wallClock.step(clockSteps[event.a % clockSteps.size()]);
        case Kind::quitAndRestart:
            return quitAndRestart();
        case Kind::converge:
            return event.a % 2 == 0 ? converge() : rescueWithoutHelper(event);
        case Kind::refuseSwitches:
        case Kind::loseReports:
        case Kind::loseLists:
            return startOneFault(event.kind);
        case Kind::wait:
            return;
    }
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
    allowForSlowness(slowest);
}

void World::setSilent(bool isSilent) {
    if (isSilent && !lastWord_.isSilent()) {
        std::vector<DisplayID> displays;
        for (const SimulatedDisplay& display : system_.windowServer.desk()) {
            displays.push_back(display.id);
        }
        lastWord_.fallSilent(displays);
        allowForSlowness(25s);
    } else if (!isSilent) {
        lastWord_.speak();
    }
    displaySwitch_.setSilent(isSilent);
}

void World::hangApplication(Application& application, Delay duration) {
    using watchdog::WatchdogService;
    const auto never = [] { return false; };
    Invariants& invariants = application.invariants();
    invariants.noteHangBegins();
    const Delay untilNoticed = std::min<Delay>(duration, WatchdogService::silenceLimit);
    application.blockMain(untilNoticed, never);
    Delay looked{0};
    for (; untilNoticed + looked < duration && !lastWord_.isSilent() &&
           !application.helperIsStopped();
         looked += WatchdogService::lookInterval) {
        watchdogLooks();
        application.blockMain(WatchdogService::lookInterval, never);
    }
    if (looked > Delay::zero() && !invariants.somethingIsOn() && invariants.somethingIsListed()) {
        invariants.fail("nothing is on though the watchdog looks after a hung application");
    }
    invariants.noteHangEnds();
    application.watchModel().noteHang();
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
    forgetStore();
}

void World::endAllFaults() {
    stopFaults();
    setSilent(false);
    system_.userDefaults.setWritable(true);
    system_.lid.open();
    first_.stopHelper(Stop::nowhere);
    second_.stopHelper(Stop::nowhere);
    // A call that has begun ends first.
    advance(endOfSlowCall);
}

void World::converge() {
    endAllFaults();
    expectUsableWithin(convergenceTime);
}

/// Only the helpers are left as a fault, when everything goes dark.
void World::rescueWithoutHelper(const Event& event) {
    endAllFaults();
    const Stop stop = event.b % 2 == 0 ? Stop::beforeItReads : Stop::beforeItAnswers;
    first_.stopHelper(stop);
    second_.stopHelper(stop);
    switchAllOff();
    expectUsableWithin(longestDarkness);
}

void World::expectUsableWithin(Delay duration) {
    Invariants& invariants = first_.invariants();
    const bool couldBeUsable = invariants.someRememberedIsConnected();
    advance(duration);
    // After a step of the clock by a month the registry forgets displays, by its own rule, and
    // what is forgotten is not restored.
    if (couldBeUsable && invariants.someRememberedIsConnected() &&
        !invariants.someRememberedIsUsable()) {
        invariants.fail("nothing usable soon after the faults stopped");
    }
}

}  // namespace tavrel::simulation
