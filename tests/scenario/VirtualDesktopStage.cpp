#include "tests/scenario/VirtualDesktopStage.h"

#include <algorithm>
#include <csignal>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "tests/scenario/AccessibleReading.h"
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

bool showsAll(const AccessibleWindow& accessible, std::size_t displays) {
    const Window window = readWindow(accessible.elements());
    return window.rows.size() == displays &&
           std::none_of(window.rows.begin(), window.rows.end(),
                        [](const Row& row) { return row.isBusy; });
}

/// Whether it lies completely on one monitor that is on.
bool isVisible(const Bounds& bounds, const std::vector<Monitor>& monitors) {
    return std::any_of(monitors.begin(), monitors.end(), [&](const Monitor& each) {
        return each.on && Bounds{each.x, each.y, each.width, each.height}.contains(bounds);
    });
}

}  // namespace

std::vector<std::string> learnOutputs(std::size_t displays, const std::string& program) {
    const VirtualDesktop desktop(desktopOptions(displays));
    const support::UserHome home;
    const AppProcess application(desktop, home, {.program = program});
    const AccessibleWindow accessible(desktop.accessibilityBusAddress(), application.pid());
    if (!waitUntil([&] { return showsAll(accessible, displays); })) {
        throw std::runtime_error("the application lists no displays: " +
                                 application.standardError());
    }
    std::vector<std::string> outputs;
    const auto off = [&] {
        std::vector<std::string> names;
        for (const Monitor& monitor : desktop.monitors()) {
            if (!monitor.on) {
                names.push_back(monitor.name);
            }
        }
        return names;
    };
    const auto flip = [&](Display display) {
        accessible.actOn([&] { return findSwitch(accessible.elements(), display); });
    };
    for (Display display = 0; display < displays; ++display) {
        flip(display);
        if (!waitUntil([&] { return off().size() == 1; })) {
            throw std::runtime_error("switching a display off changes nothing at the server");
        }
        outputs.push_back(off().front());
        flip(display);
        waitUntil([&] { return off().empty(); });
    }
    return outputs;
}

VirtualDesktopStage::VirtualDesktopStage(std::size_t displays, std::string program)
    : program_(std::move(program)),
      outputs_(learnOutputs(displays, program_)),
      desktop_(desktopOptions(displays)),
      pointer_(desktop_.displayName()),
      serverAtFirst_(server()) {
    startApplication();
}

VirtualDesktopStage::~VirtualDesktopStage() = default;

void VirtualDesktopStage::startApplication() {
    application_ = std::make_unique<AppProcess>(desktop_, home_, AppProcess::Options{program_});
    accessible_ =
        std::make_unique<AccessibleWindow>(desktop_.accessibilityBusAddress(), application_->pid());
    if (!waitUntil([&] { return showsAll(*accessible_, outputs_.size()); })) {
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
    std::optional<AccessibleElement> target;
    // The window may be moving to another monitor: wait until it has stopped.
    const bool found = waitUntil([&] {
        const std::optional<AccessibleElement> before = std::exchange(target, find());
        return target && before && target->bounds == before->bounds &&
               isVisible(target->bounds, desktop_.monitors());
    });
    if (!found) {
        throw std::runtime_error("there is nothing to click on");
    }
    pointer_.click(target->bounds.centreX(), target->bounds.centreY());
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
