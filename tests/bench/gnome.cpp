#include <sstream>
#include <string>
#include <vector>

#include "platform/gnome/GnomeWindowServer.h"
#include "tests/bench/CompositorUse.h"
#include "tests/bench/Desk.h"
#include "tests/bench/Measures.h"
#include "tests/scenario/GnomeStage.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/ChildProcess.h"

/// A start, memory and idling on GNOME's compositor; and a switch there beside the bus calls that
/// make it, once by gdbus and once from within a program.
namespace tavrel::bench {
namespace {

using support::GnomeDesktop;

constexpr const char* service = "org.gnome.Mutter.DisplayConfig";
/// The rightmost, so that no other has to move.
constexpr const char* switched = "Meta-2";

/// The compositor, asked by us.
struct Observer {
    explicit Observer(const GnomeDesktop& desktop)
        : server(store, {.busAddress = desktop.busAddress()}) {}

    SimulatedUserDefaults store;
    GnomeWindowServer server;
    OneDisplay display{server, server, switched};
};

std::vector<GnomeDesktop::Screen> layoutWith(std::vector<GnomeDesktop::Screen> screens, bool on) {
    for (GnomeDesktop::Screen& each : screens) {
        each.isOn = each.connector != switched || on;
    }
    return screens;
}

/// A layout as gdbus takes it.
std::string written(const std::vector<GnomeDesktop::Screen>& screens) {
    std::ostringstream text;
    text << '[';
    for (const GnomeDesktop::Screen& each : screens) {
        if (each.isOn) {
            text << (text.str().size() > 1 ? "," : "") << '(' << each.x << ',' << each.y << ','
                 << std::showpoint << each.scale << ",0," << (each.isPrimary ? "true" : "false")
                 << ",[('" << each.connector << "','" << each.mode << "',{})])";
        }
    }
    return text.str() + ']';
}

/// A compositor without the application, which would have its own view of others' changes.
class OtherGnome {
public:
    double timeCalls(bool on) {
        return observer_.display.timed(on, [&] { desktop_.apply(layoutWith(atFirst_, on)); });
    }

    double timeGdbus(bool on) {
        return observer_.display.timed(on, [&] {
            const std::string state = gdbus({"GetCurrentState"});
            const std::size_t begin = state.find_first_of("0123456789", state.find(' '));
            const std::string serial = std::to_string(std::stoul(state.substr(begin)));
            gdbus({"ApplyMonitorsConfig", serial, "1", written(layoutWith(atFirst_, on)), "{}"});
        });
    }

private:
    std::string gdbus(const std::vector<std::string>& call) const {
        std::vector<std::string> command{"gdbus",
                                         "call",
                                         "--session",
                                         "--dest",
                                         service,
                                         "--object-path",
                                         "/org/gnome/Mutter/DisplayConfig",
                                         "--method",
                                         std::string(service) + '.' + call.front()};
        command.insert(command.end(), call.begin() + 1, call.end());
        support::Environment environment = support::bareEnvironment();
        environment["DBUS_SESSION_BUS_ADDRESS"] = desktop_.busAddress();
        return support::runToEnd(command, environment);
    }

    GnomeDesktop desktop_;
    const std::vector<GnomeDesktop::Screen> atFirst_ = desktop_.screens();
    Observer observer_{desktop_};
};

}  // namespace

void measureGnome(const Extent& extent, Report& report) {
    if (!GnomeDesktop::isInstalled()) {
        report.addMissing("GNOME", "mutter is not installed");
        return;
    }
    scenario::GnomeStage stage(TAVREL_PROGRAM);
    const Played played = playedOn(stage);
    measureStay(played, "GNOME", extent, report);

    const scenario::Display row = rowOf(stage, switched);
    const Observer observer(stage.desktop());
    OtherGnome other;
    std::vector<Way> ways{
        {"Tavrel", [&](bool on) { return timePress(played, row, observer.display, on); }},
        {"the calls alone", [&](bool on) { return other.timeCalls(on); },
         Goal{Goal::Of::excess, 2}}};
    if (Program::other("gdbus").isInstalled()) {
        ways.push_back({"gdbus as processes", [&](bool on) { return other.timeGdbus(on); },
                        Goal{Goal::Of::ratio, 0.5}});
    } else {
        report.addMissing("GNOME: a switch beside gdbus", "it is not installed");
    }
    compareWays("GNOME", ways, extent, report);
}

}  // namespace tavrel::bench
