#include "tests/simulation/exhaustive/SmallWorld.h"

namespace tavrel::simulation {

namespace {

using namespace std::chrono_literals;
using Kind = Event::Kind;
using WhenOff = SimulatedWindowServer::WhenOff;

const SimulatedDisplay onlyPanel{.id = 5, .builtIn = true};
const SimulatedDisplay monitor{.id = 1};

/// As `World` reads the numbers of an event.
constexpr std::uint32_t panelsRow = 0;
constexpr std::uint32_t monitorsRow = 1;
constexpr std::uint32_t outsideOnPanel = 0;
constexpr std::uint32_t outsideOnMonitor = 4;
constexpr std::uint32_t firstMonitor = 0;
constexpr std::uint32_t flip = 1;
constexpr std::uint32_t off = 1;
constexpr std::uint32_t switchedOn = 1;
constexpr std::uint32_t beginWithAdd = 0x11;

/// In half a second a delayed call, a look and a verification can each be between two events;
/// after the longer time nearly everything has settled.
constexpr auto shortWait = 500ms;
constexpr auto longWait = 2s;

/// A switch that the user has just flipped is still on its way after a short wait.
constexpr auto slowly = 400ms;

constexpr Event at(Kind kind, std::uint32_t a = 0, std::uint32_t b = 0) {
    return {kind, 0ms, a, b};
}

}  // namespace

const std::array<SmallWorld, 4>& smallWorlds() {
    static const std::array<SmallWorld, 4> worlds{
        SmallWorld{"what is off stays online (as on X11)",
                   {WhenOff::staysOnline, true, {onlyPanel, monitor}},
                   true,
                   false},
        SmallWorld{"what is off is in no list (as on a Mac)",
                   {WhenOff::goesOffline, false, {onlyPanel, monitor}},
                   true,
                   false},
        SmallWorld{"what is off stays online, and switches are slow",
                   {WhenOff::staysOnline, true, {onlyPanel, monitor}, slowly},
                   false,
                   true},
        SmallWorld{"what is off is in no list, and switches are slow",
                   {WhenOff::goesOffline, false, {onlyPanel, monitor}, slowly},
                   false,
                   true}};
    return worlds;
}

std::vector<Event> possibleEvents(const SmallWorld& small, const World& world) {
    std::vector<Event> events{{Kind::wait, shortWait, 0, 0},
                              {Kind::wait, longWait, 0, 0},
                              at(Kind::userSwitch, panelsRow, flip),
                              at(Kind::userSwitch, monitorsRow, flip),
                              at(Kind::hotKey),
                              at(Kind::idleReport, beginWithAdd),
                              at(Kind::quitAndRestart)};

    const SimulatedDisplay& thePanel = *world.windowServer().find(onlyPanel.id);
    const SimulatedDisplay& theMonitor = *world.windowServer().find(monitor.id);
    if (thePanel.enabled) {
        events.push_back(at(Kind::outsideSwitch, outsideOnPanel, off));
    }
    if (theMonitor.connected && theMonitor.enabled) {
        events.push_back(at(Kind::outsideSwitch, outsideOnMonitor, off));
    }
    events.push_back(theMonitor.connected ? at(Kind::unplug, firstMonitor)
                                          : at(Kind::plug, firstMonitor, switchedOn));

    if (!small.hasFaults) {
        return events;
    }
    for (const Kind fault : {Kind::refuseSwitches, Kind::loseReports, Kind::loseLists}) {
        if (world.fault() != fault) {
            events.push_back(at(fault));
        }
    }
    if (world.fault().has_value()) {
        events.push_back(at(Kind::stopFaults));
    }
    return events;
}

}  // namespace tavrel::simulation
