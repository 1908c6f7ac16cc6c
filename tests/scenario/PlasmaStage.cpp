#include "tests/scenario/PlasmaStage.h"

#include <algorithm>
#include <csignal>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tests/scenario/AccessibleReading.h"

namespace tavrel::scenario {

namespace {

using support::waitUntil;

}  // namespace

PlasmaStage::PlasmaStage(std::size_t displays, std::string program, const std::string& xDisplayName)
    : desktop_(static_cast<int>(displays), xDisplayName),
      bus_(home_.path(), "", home_.janitor()),
      program_(std::move(program)),
      elsewhereLink_({.displayName = desktop_.displayName()}),
      elsewhere_(elsewhereLink_) {
    std::map<DisplayID, std::string> byNumber;
    const auto layout = elsewhere_.read().layout;
    for (const layout::Output& output : layout.value_or(layout::Layout{}).outputs) {
        byNumber.emplace(output.display, output.identity.connector);
    }
    for (const auto& [display, connector] : byNumber) {
        displays_.push_back(display);
        connectors_.push_back(connector);
    }
    if (displays_.size() != displays) {
        throw std::runtime_error("the compositor does not show all displays");
    }
    serverAtFirst_ = server();
    startApplication();
}

PlasmaStage::~PlasmaStage() = default;

support::Environment PlasmaStage::environment() const {
    return {{"WAYLAND_DISPLAY", desktop_.displayName()},
            // The toolkit's plug-in for Wayland leaves some objects behind when it is unloaded.
            {"LSAN_OPTIONS", "detect_leaks=0"},
            {"XDG_SESSION_TYPE", "wayland"},
            {"QT_QPA_PLATFORM", "wayland"},
            {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"},
            {"DBUS_SESSION_BUS_ADDRESS", bus_.sessionAddress()}};
}

void PlasmaStage::startApplication() {
    application_ = std::make_unique<support::AppProcess>(
        home_, support::AppProcess::Options{.program = program_, .environment = environment()});
    accessible_ = std::make_unique<support::AccessibleWindow>(bus_.accessibilityAddress(),
                                                              application_->pid());
    const bool isUp = waitUntil([&] {
        const std::vector<Row> rows = window().rows;
        return rows.size() == displays_.size() &&
               std::none_of(rows.begin(), rows.end(), [](const Row& row) { return row.isBusy; });
    });
    if (!isUp) {
        throw std::runtime_error("the application does not come up: " +
                                 application_->standardError());
    }
}

void PlasmaStage::quitApplication() {
    application_->process().signal(SIGTERM);
    if (application_->process().waitForEnd() != support::ChildProcess::Ending{0, std::nullopt}) {
        throw std::runtime_error("the application does not quit: " + application_->standardError());
    }
}

void PlasmaStage::killApplication() {
    application_->process().killFamily();
}

void PlasmaStage::crashApplication() {
    application_->process().signal(SIGKILL);
    application_->process().waitForEnd();
}

void PlasmaStage::flip(Display display) {
    std::optional<support::AccessibleElement> found;
    const auto find = [&] { return found = findSwitch(accessible_->elements(), display); };
    // One that is locked does nothing when it is pressed.
    if (waitUntil([&] { return find().has_value(); }) && found->isEnabled()) {
        accessible_->actOn(find);
    }
}

void PlasmaStage::pressRefresh() {
    accessible_->actOn([&] {
        auto button = accessible_->find("Refresh displays");
        return button && button->isEnabled() ? button : std::nullopt;
    });
}

void PlasmaStage::pressWake() {
    accessible_->actOn([&] { return accessible_->find("Wake both displays"); });
}

void PlasmaStage::pressHotKey() {
    throw std::runtime_error("there is no hot key on Plasma");
}

void PlasmaStage::switchElsewhere(const std::vector<Display>& displays, bool on) {
    const auto layout = elsewhere_.read().layout.value_or(layout::Layout{});
    layout::WholeLayout whole{.primary = layout.primary.value_or(0)};
    int right = 0;
    for (const layout::Output& output : layout.outputs) {
        const bool isMeant = std::any_of(displays.begin(), displays.end(), [&](Display display) {
            return displays_.at(display) == output.display;
        });
        auto shown = output.shown;
        if (isMeant && on && !shown.has_value()) {
            const layout::Mode& mode = output.modes.front();
            shown = layout::Shown{.mode = mode, .area = {0, 0, mode.width, mode.height}};
        }
        if (isMeant && !on) {
            shown.reset();
        }
        if (shown.has_value()) {
            shown->area.x = right;
            right = shown->area.right();
        }
        whole.places.push_back({output.display, shown});
    }
    if (elsewhere_.apply(whole) != layout::WholeLayoutServer::Outcome::applied) {
        throw std::runtime_error("the compositor refuses what another program wants");
    }
}

Window PlasmaStage::window() {
    return readWindow(accessible_->elements());
}

std::vector<ServerDisplay> PlasmaStage::server() {
    const auto screens = desktop_.screens();
    const auto primary = elsewhere_.read().layout.value_or(layout::Layout{}).primary;
    std::vector<ServerDisplay> result;
    for (std::size_t i = 0; i < connectors_.size(); ++i) {
        const auto screen = std::find_if(screens.begin(), screens.end(), [&](const auto& each) {
            return each.name == connectors_[i];
        });
        const bool isOn = screen != screens.end() && screen->isOn;
        result.push_back({isOn, isOn ? screen->geometry + " scale " + screen->scale +
                                           (primary == displays_[i] ? " primary" : "")
                                     : ""});
    }
    return result;
}

bool PlasmaStage::await(const std::function<bool()>& condition) {
    return waitUntil(condition);
}

}  // namespace tavrel::scenario
