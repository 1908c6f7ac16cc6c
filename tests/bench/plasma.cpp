#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/plasma/PlasmaWindowServer.h"
#include "tests/bench/CompositorUse.h"
#include "tests/bench/Desk.h"
#include "tests/bench/Measures.h"
#include "tests/scenario/PlasmaStage.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/ChildProcess.h"

/// A start, memory and idling on Plasma's compositor; and a switch there beside kscreen-doctor, and
/// beside our own requests to the compositor without window and helper.
namespace tavrel::bench {
namespace {

/// The rightmost, so that no other has to move.
constexpr const char* switched = "Virtual-2";

/// The compositor, asked and told by us.
struct Observer {
    explicit Observer(const support::PlasmaDesktop& desktop)
        : server(store, {.displayName = desktop.displayName()}) {}

    SimulatedUserDefaults store;
    PlasmaWindowServer server;
    OneDisplay display{server, server, switched};
};

/// A compositor without the application, which would have its own view of others' changes.
class OtherPlasma {
public:
    double timeRequests(bool on) {
        return observer_.display.timed(on, [&] { observer_.display.set(on); });
    }

    /// Empty if kscreen-doctor can switch displays here, else what becomes of it.
    std::string whyNoDoctor() {
        const support::ChildProcess process(doctor(false));
        const auto ending = process.waitForEnd();
        if (!observer_.display.isOn()) {
            observer_.display.set(true);
            return "";
        }
        std::ostringstream why;
        why << "kscreen-doctor switches nothing here";
        if (ending) {
            why << " and ends with " << *ending;
        }
        return why.str();
    }

    double timeDoctor(bool on) {
        std::optional<support::ChildProcess> process;
        const double time = observer_.display.timed(on, [&] { process.emplace(doctor(on)); });
        process->waitForEnd();
        return time;
    }

private:
    support::ChildProcess::Options doctor(bool on) const {
        support::ChildProcess::Options options;
        options.command = {"kscreen-doctor",
                           std::string("output.") + switched + (on ? ".enable" : ".disable")};
        options.environment["WAYLAND_DISPLAY"] = desktop_.displayName();
        options.environment["DBUS_SESSION_BUS_ADDRESS"] = desktop_.sessionBusAddress();
        options.environment["XDG_SESSION_TYPE"] = "wayland";
        options.environment["XDG_RUNTIME_DIR"] = home_.path().string();
        options.environment["HOME"] = home_.path().string();
        options.environment["QT_QPA_PLATFORM"] = "wayland";
        // Otherwise it would have the bus start one.
        options.environment["KSCREEN_BACKEND"] = "KWayland";
        options.environment["KSCREEN_BACKEND_INPROCESS"] = "1";
        return options;
    }

    support::UserHome home_;
    support::PlasmaDesktop desktop_;
    Observer observer_{desktop_};
};

}  // namespace

void measurePlasma(const Extent& extent, Report& report) {
    if (!support::PlasmaDesktop::isInstalled()) {
        report.addMissing("Plasma", "kwin_wayland is not installed");
        return;
    }
    scenario::PlasmaStage stage(3, TAVREL_PROGRAM);
    const Played played = playedOn(stage);
    measureStay(played, "Plasma", extent, report);

    const scenario::Display row = rowOf(stage, switched);
    const Observer observer(stage.desktop());
    OtherPlasma other;
    std::vector<Way> ways{
        {"Tavrel", [&](bool on) { return timePress(played, row, observer.display, on); }},
        {"our requests without window and helper", [&](bool on) { return other.timeRequests(on); },
         Goal{Goal::Of::excess, 2}}};
    const std::string why = Program::other("kscreen-doctor").isInstalled()
                                ? other.whyNoDoctor()
                                : "kscreen-doctor is not installed";
    if (why.empty()) {
        ways.push_back({"kscreen-doctor as a process",
                        [&](bool on) { return other.timeDoctor(on); }, Goal{Goal::Of::ratio, 0.5}});
    } else {
        report.addMissing("Plasma: a switch beside kscreen-doctor", why);
    }
    compareWays("Plasma", ways, extent, report);
}

}  // namespace tavrel::bench
