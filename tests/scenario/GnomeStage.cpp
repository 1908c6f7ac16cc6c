#include "tests/scenario/GnomeStage.h"

#include <algorithm>
#include <csignal>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "platform/gnome/GnomeWindowServer.h"
#include "tests/scenario/AccessibleReading.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/WaitUntil.h"

namespace tavrel::scenario {

namespace {

using support::AppProcess;
using support::GnomeDesktop;
using support::waitUntil;

std::string place(const GnomeDesktop::Screen& screen) {
    std::ostringstream text;
    text << screen;
    return text.str().substr(screen.connector.size());
}

}  // namespace

GnomeStage::GnomeStage(std::string program, const std::vector<std::string>& monitors)
    : program_(std::move(program)),
      desktop_(false, monitors),
      outputs_(connectorsOfRows()),
      serverAtFirst_(server()) {
    startApplication();
}

support::VirtualDesktop::Options GnomeStage::asideOptions() {
    support::VirtualDesktop::Options options;
    options.monitors = 1;
    return options;
}

GnomeStage::~GnomeStage() {
    application_.reset();
}

/// The compositor lists monitors in the order it was told.
std::vector<std::string> GnomeStage::connectorsOfRows() const {
    SimulatedUserDefaults store;
    GnomeWindowServer server(store, {.busAddress = desktop_.busAddress()});
    std::vector<std::string> connectors;
    for (const GnomeDesktop::Screen& each : desktop_.screens()) {
        connectors.push_back(each.connector);
    }
    return inOrderOfRows(server.now()->allDisplays().value(), connectors);
}

support::Environment GnomeStage::environment() const {
    return {{"WAYLAND_DISPLAY", desktop_.displayName()},
            {"DBUS_SESSION_BUS_ADDRESS", desktop_.busAddress()},
            {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"},
            // The toolkit's plug-in for Wayland leaves some objects behind when it is unloaded.
            {"LSAN_OPTIONS", "detect_leaks=0"},
            // It is to find out by itself.
            {"QT_QPA_PLATFORM", ""}};
}

void GnomeStage::startApplication() {
    application_.reset();
    const std::string& bus = accessibility_.accessibilityAddress();
    application_ = std::make_unique<AppProcess>(
        home_, AppProcess::Options{.program = program_, .environment = environment()});
    accessible_ = std::make_unique<support::AccessibleWindow>(bus, application_->pid());
    const bool isUp = waitUntil([&] {
        const Window shown = window();
        return shown.rows.size() == outputs_.size() &&
               std::none_of(shown.rows.begin(), shown.rows.end(),
                            [](const Row& row) { return row.isBusy; });
    });
    if (!isUp) {
        std::ostringstream shown;
        shown << window();
        throw std::runtime_error("the application does not come up: " + shown.str() +
                                 application_->standardError());
    }
}

void GnomeStage::quitApplication() {
    application_->process().signal(SIGTERM);
    if (application_->process().waitForEnd() != support::ChildProcess::Ending{0, std::nullopt}) {
        throw std::runtime_error("the application does not quit: " + application_->standardError());
    }
}

void GnomeStage::killApplication() {
    application_->process().killFamily();
}

void GnomeStage::crashApplication() {
    application_->process().signal(SIGKILL);
    application_->process().waitForEnd();
}

void GnomeStage::flip(Display display) {
    std::optional<support::AccessibleElement> target;
    waitUntil([&] { return (target = findSwitch(accessible_->elements(), display)).has_value(); });
    // As a click on one that may not be used: nothing happens.
    if (target.has_value() && target->isEnabled()) {
        accessible_->actOn([&] { return findSwitch(accessible_->elements(), display); });
    }
}

void GnomeStage::press(const std::string& name) {
    accessible_->actOn([&]() -> std::optional<support::AccessibleElement> {
        auto button = accessible_->find(name);
        return button && button->isEnabled() ? button : std::nullopt;
    });
}

void GnomeStage::pressRefresh() {
    press("Refresh displays");
}

void GnomeStage::pressWake() {
    press("Wake both displays");
}

void GnomeStage::pressHotKey() {
    throw std::logic_error("there is no hot key here");
}

void GnomeStage::switchElsewhere(const std::vector<Display>& which, bool on) {
    std::vector<GnomeDesktop::Screen> screens = desktop_.screens();
    for (const Display display : which) {
        for (GnomeDesktop::Screen& screen : screens) {
            if (screen.connector == outputs_.at(display)) {
                screen.isOn = on;
            }
        }
    }
    // Side by side, as far as there are any.
    int right = 0;
    bool hasPrimary = false;
    for (GnomeDesktop::Screen& screen : screens) {
        if (screen.isOn) {
            screen.mode =
                screen.mode.empty() ? GnomeDesktop::preferredMode(screen.connector) : screen.mode;
            screen.x = right;
            screen.y = 0;
            screen.isPrimary = !std::exchange(hasPrimary, true);
            right += std::stoi(screen.mode);
        }
    }
    desktop_.apply(screens);
}

Window GnomeStage::window() {
    return readWindow(accessible_->elements());
}

std::vector<ServerDisplay> GnomeStage::server() {
    // Asked once: it is waited for, and answering takes the compositor's time.
    const std::vector<GnomeDesktop::Screen> screens = desktop_.screens();
    std::vector<ServerDisplay> result;
    for (const std::string& output : outputs_) {
        const auto found = std::find_if(
            screens.begin(), screens.end(),
            [&](const GnomeDesktop::Screen& each) { return each.connector == output; });
        const bool isOn = found != screens.end() && found->isOn;
        result.push_back({isOn, isOn ? place(*found) : ""});
    }
    return result;
}

bool GnomeStage::await(const std::function<bool()>& condition) {
    return waitUntil(condition);
}

}  // namespace tavrel::scenario
