#include "tests/scenario/VirtualDesktopStage.h"

#include <algorithm>
#include <csignal>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "platform/x11/X11WindowServer.h"
#include "tests/scenario/AccessibleReading.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/Keyboard.h"

namespace tavrel::scenario {

namespace {

using support::AccessibleElement;
using support::AccessibleWindow;
using support::AppProcess;
using support::Bounds;
using support::Monitor;
using support::VirtualDesktop;
using support::waitUntil;

VirtualDesktop::Options desktopOptions(std::size_t displays) {
    VirtualDesktop::Options options;
    options.monitors = static_cast<int>(displays);
    options.accessibility = true;
    return options;
}

std::string place(const Monitor& monitor) {
    std::ostringstream text;
    text << monitor;
    return text.str().substr(monitor.name.size());
}

std::vector<std::string> outputsOfRows(const VirtualDesktop& desktop) {
    SimulatedUserDefaults store;
    X11WindowServer server(store, {.displayName = desktop.displayName()});
    std::vector<std::string> outputs;
    for (const Monitor& each : desktop.monitors()) {
        outputs.push_back(each.name);
    }
    return inOrderOfRows(server.now()->allDisplays().value(), outputs);
}

/// Whether it lies completely on one monitor that is on.
bool isVisible(const Bounds& bounds, const std::vector<Monitor>& monitors) {
    return std::any_of(monitors.begin(), monitors.end(), [&](const Monitor& each) {
        return each.on && Bounds{each.x, each.y, each.width, each.height}.contains(bounds);
    });
}

}  // namespace

VirtualDesktopStage::VirtualDesktopStage(std::size_t displays, std::string program)
    : program_(std::move(program)),
      desktop_(desktopOptions(displays)),
      outputs_(outputsOfRows(desktop_)),
      pointer_(desktop_.displayName()),
      serverAtFirst_(server()) {
    startApplication();
}

VirtualDesktopStage::~VirtualDesktopStage() = default;

void VirtualDesktopStage::startApplication() {
    application_ = std::make_unique<AppProcess>(desktop_, home_, AppProcess::Options{program_});
    accessible_ =
        std::make_unique<AccessibleWindow>(desktop_.accessibilityBusAddress(), application_->pid());
    const bool isUp = waitUntil([&] {
        const std::vector<Row> rows = window().rows;
        return rows.size() == outputs_.size() &&
               std::none_of(rows.begin(), rows.end(), [](const Row& row) { return row.isBusy; });
    });
    if (!isUp) {
        throw std::runtime_error("the application does not come up: " +
                                 application_->standardError());
    }
}

void VirtualDesktopStage::quitApplication() {
    application_->process().signal(SIGTERM);
    if (application_->process().waitForEnd() != support::ChildProcess::Ending{0, std::nullopt}) {
        throw std::runtime_error("the application does not quit: " + application_->standardError());
    }
}

void VirtualDesktopStage::killApplication() {
    application_->process().killFamily();
}

void VirtualDesktopStage::crashApplication() {
    application_->process().signal(SIGKILL);
    application_->process().waitForEnd();
}

void VirtualDesktopStage::click(const std::function<std::optional<AccessibleElement>()>& find) {
    std::optional<Bounds> place;
    const auto look = [&]() -> std::optional<Bounds> {
        const auto target = find();
        try {
            return target ? std::optional(accessible_->boundsOf(*target)) : std::nullopt;
        } catch (const support::DBusError&) {
            // It has disappeared since.
            return std::nullopt;
        }
    };
    // The window may be moving to another monitor: wait until it has stopped.
    const bool found = waitUntil([&] {
        const std::optional<Bounds> before = std::exchange(place, look());
        return place && before && *place == *before && isVisible(*place, desktop_.monitors());
    });
    if (!found) {
        throw std::runtime_error("there is nothing to click on");
    }
    pointer_.click(place->centreX(), place->centreY());
}

void VirtualDesktopStage::flip(Display display) {
    click([&] { return findSwitch(accessible_->elements(), display); });
}

void VirtualDesktopStage::pressRefresh() {
    click([&] {
        auto button = accessible_->find("Refresh displays");
        return button && button->isEnabled() ? button : std::nullopt;
    });
}

void VirtualDesktopStage::pressWake() {
    click([&] { return accessible_->find("Wake both displays"); });
}

void VirtualDesktopStage::pressHotKey() {
    support::Keyboard(desktop_.displayName())
        .chord({support::key::control, support::key::alt, support::key::super, 'w'});
}

void VirtualDesktopStage::switchElsewhere(const std::vector<Display>& displays, bool on) {
    std::vector<std::string> names;
    names.reserve(displays.size());
    for (const Display display : displays) {
        names.push_back(outputs_.at(display));
    }
    if (!on) {
        desktop_.otherClient().switchOff(names);
        return;
    }
    for (const std::string& name : names) {
        desktop_.otherClient().switchOn(name);
    }
}

Window VirtualDesktopStage::window() {
    return readWindow(accessible_->elements());
}

std::vector<ServerDisplay> VirtualDesktopStage::server() {
    const std::vector<Monitor> monitors = desktop_.monitors();
    std::vector<ServerDisplay> result;
    for (const std::string& output : outputs_) {
        const auto monitor = std::find_if(monitors.begin(), monitors.end(),
                                          [&](const auto& each) { return each.name == output; });
        if (monitor == monitors.end()) {
            throw std::runtime_error("the server has lost " + output);
        }
        result.push_back({monitor->on, monitor->on ? place(*monitor) : ""});
    }
    return result;
}

bool VirtualDesktopStage::await(const std::function<bool()>& condition) {
    return waitUntil(condition);
}

}  // namespace tavrel::scenario
