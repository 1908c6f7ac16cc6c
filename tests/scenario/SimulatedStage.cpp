#include "tests/scenario/SimulatedStage.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace tavrel::scenario {

namespace {

/// Ascending like the rows of external displays; otherwise arbitrary.
DisplayID identifierOf(Display display) {
    return 100 + static_cast<DisplayID>(display);
}

}  // namespace

SimulatedStage::SimulatedStage(std::size_t displays, std::uint64_t seed) : system_(seed) {
    for (Display each = 0; each < displays; ++each) {
        SimulatedDisplay display;
        display.id = identifierOf(each);
        system_.windowServer.connect(display);
    }
    serverAtFirst_ = server();
    startApplication();
}

SimulatedStage::~SimulatedStage() {
    killApplication();
}

void SimulatedStage::flip(Display display) {
    await([&] {
        const auto& devices = controller_->displays();
        return display < devices.size() && !devices[display].isBusy;
    });
    const DisplayDevice device = controller_->displays().at(display);
    if (!isLocked(device)) {
        controller_->set(device, !device.isOn);
    }
}

void SimulatedStage::pressRefresh() {
    await([&] { return !controller_->isRefreshing(); });
    controller_->refresh(std::nullopt);
}

void SimulatedStage::pressWake() {
    await([&] { return !controller_->displays().empty(); });
    controller_->wakeAll();
}

void SimulatedStage::pressHotKey() {
    system_.hotKeys.press();
}

void SimulatedStage::startApplication() {
    delegate_ = std::make_unique<AppDelegate>(system_.platform(), system_.hotKeys);
    delegate_->applicationDidFinishLaunching();
    controller_ = DisplayController::create(system_.platform());
}

void SimulatedStage::quitApplication() {
    delegate_->applicationWillTerminate();
    killApplication();
}

void SimulatedStage::killApplication() {
    delegate_.reset();
    controller_.reset();
    system_.scheduler.settle();
}

void SimulatedStage::crashApplication() {
    throw std::logic_error("there is no watchdog on this stage");
}

void SimulatedStage::switchElsewhere(const std::vector<Display>& displays, bool on) {
    for (const Display display : displays) {
        system_.windowServer.switchFromOutside(identifierOf(display), on);
    }
}

Window SimulatedStage::window() {
    Window window;
    if (controller_ == nullptr) {
        return window;
    }
    for (const DisplayDevice& device : controller_->displays()) {
        Row row;
        row.name = device.name();
        row.isBusy = device.isBusy;
        row.isOn = device.isOn && !device.isBusy;
        row.isSwitchEnabled = !device.isBusy && !isLocked(device);
        row.lockText = isLocked(device) && !device.isBusy ? "Must stay on" : "";
        window.rows.push_back(row);
    }
    window.footer = controller_->errorMessage().value_or(controller_->statusMessage());
    return window;
}

std::vector<ServerDisplay> SimulatedStage::server() {
    std::vector<ServerDisplay> result;
    for (const SimulatedDisplay& each : system_.windowServer.desk()) {
        result.push_back({each.connected && each.enabled, ""});
    }
    return result;
}

bool SimulatedStage::await(const std::function<bool()>& condition) {
    using namespace std::chrono_literals;
    for (Delay passed = 0ms; passed < 30s; passed += 10ms) {
        system_.scheduler.settle();
        if (condition()) {
            return true;
        }
        system_.scheduler.advance(10ms);
    }
    return false;
}

bool SimulatedStage::isLocked(const DisplayDevice& device) const {
    const auto& all = controller_->displays();
    return device.isOn && std::count_if(all.begin(), all.end(),
                                        [](const DisplayDevice& each) { return each.isOn; }) <= 1;
}

}  // namespace tavrel::scenario
