#include "tests/platform/macos/MacStage.h"

#include <sys/socket.h>

#include <algorithm>
#include <csignal>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "tests/scenario/AccessibleReading.h"
#include "watchdog/protocol/MessageSocket.h"

namespace tavrel::scenario {

namespace {

using nlohmann::json;
using support::AccessibleElement;
using support::ChildProcess;
using support::waitUntil;

/// Ascending, as the window sorts its rows by identifier.
DisplayID identifierOf(Display display) {
    return 2 + static_cast<DisplayID>(display);
}

AccessibleElement elementOf(const json& description) {
    /// Numbered as the accessibility bus does.
    const auto state = [&](unsigned number, const char* name) {
        return std::uint64_t{description.at(name).get<bool>()} << number;
    };
    AccessibleElement element;
    element.name = description.at("name");
    element.role = description.at("role");
    element.parent = description.at("parent");
    element.states = state(3, "busy") | state(4, "checked") | state(8, "enabled") |
                     state(24, "enabled") | state(25, "showing");
    return element;
}

std::optional<AccessibleElement> find(const std::vector<AccessibleElement>& all,
                                      const std::string& name) {
    const auto found = std::find_if(all.begin(), all.end(), [&](const AccessibleElement& each) {
        return each.name == name && each.isEnabled();
    });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

/// Takes `link`, so that the application alone has it and its death shows at the other end.
std::unique_ptr<ChildProcess> start(FileDescriptor link, const std::filesystem::path& folder) {
    ChildProcess::Options options;
    options.command = {TAVREL_MAC_PROGRAM};
    options.environment[simulatedMac::SharedState::variable] = folder / "mac";
    options.environment["QT_QPA_PLATFORM"] = "offscreen";
    options.environment["HOME"] = folder;
    options.standardError = folder / "err";
    options.descriptorThree = link.number();
    return std::make_unique<ChildProcess>(options);
}

}  // namespace

MacStage::MacStage(std::size_t displays, const simulatedMac::Display& display)
    : mac_(folder_.path() / "mac") {
    for (Display each = 0; each < displays; ++each) {
        simulatedMac::Display monitor = display;
        monitor.id = identifierOf(each);
        connect(mac_, monitor);
    }
    serverAtFirst_ = server();
    startApplication();
}

MacStage::~MacStage() = default;

void MacStage::startApplication() {
    auto [ours, theirs] = watchdog::makeSocketPair().value();
    link_.emplace(std::move(ours));
    application_ = start(std::move(theirs), folder_.path());
    const bool isUp = waitUntil([&] {
        const Window shown = window();
        return shown.rows.size() == serverAtFirst_.size() &&
               std::none_of(shown.rows.begin(), shown.rows.end(),
                            [](const Row& row) { return row.isBusy; });
    });
    if (!isUp) {
        fail("the application does not come up");
    }
}

void MacStage::quitApplication() {
    beginToQuit();
    awaitQuit();
}

void MacStage::beginToQuit() {
    application_->signal(SIGTERM);
}

void MacStage::awaitQuit() {
    if (application_->waitForEnd() != ChildProcess::Ending{0, std::nullopt}) {
        fail("the application does not quit");
    }
}

void MacStage::killApplication() {
    application_->killFamily();
}

void MacStage::crashApplication() {
    application_->signal(SIGKILL);
    application_->waitForEnd();
}

void MacStage::flip(Display display) {
    click([&] { return findSwitch(elements(), display); });
}

void MacStage::pressRefresh() {
    click([&] { return find(elements(), "Refresh displays"); });
}

void MacStage::pressWake() {
    click([&] { return find(elements(), "Wake both displays"); });
}

void MacStage::pressHotKey() {
    if (!command({{"do", "press hot key"}})) {
        throw std::runtime_error("the chord is not registered");
    }
}

bool MacStage::closeWindow() {
    return command({{"do", "close window"}});
}

std::size_t MacStage::logOut() {
    return command({{"do", "log out"}}).size();
}

void MacStage::clickDock() {
    command({{"do", "click dock"}});
}

void MacStage::switchElsewhere(const std::vector<Display>& displays, bool on) {
    std::vector<DisplayID> identifiers;
    std::transform(displays.begin(), displays.end(), std::back_inserter(identifiers), identifierOf);
    simulatedMac::switchElsewhere(mac_, identifiers, on);
}

Window MacStage::window() {
    return readWindow(elements());
}

std::vector<ServerDisplay> MacStage::server() {
    std::vector<ServerDisplay> result;
    for (const simulatedMac::Display& each : simulatedMac::displays(mac_)) {
        result.push_back({each.connected && each.enabled, ""});
    }
    return result;
}

bool MacStage::await(const std::function<bool()>& condition) {
    return waitUntil(condition);
}

void MacStage::fail(const std::string& what) const {
    throw std::runtime_error(what + ": " + support::readFile(folder_.path() / "err"));
}

json MacStage::command(const json& what) {
    const std::string line = what.dump() + "\n";
    std::string answer;
    char next = 0;
    send(link_->number(), line.data(), line.size(), MSG_NOSIGNAL);
    while (recv(link_->number(), &next, 1, 0) == 1 && next != '\n') {
        answer += next;
    }
    if (next != '\n') {
        fail("the application has gone");
    }
    return json::parse(answer);
}

std::vector<AccessibleElement> MacStage::elements() {
    std::vector<AccessibleElement> result;
    places_.clear();
    for (const json& each : command({{"do", "look"}})) {
        result.push_back(elementOf(each));
        result.back().object = std::to_string(places_.size());
        const json& bounds = each.at("bounds");
        places_.push_back({bounds.at(0), bounds.at(1), bounds.at(2), bounds.at(3)});
    }
    return result;
}

void MacStage::click(const std::function<std::optional<AccessibleElement>()>& find) {
    std::optional<AccessibleElement> target;
    if (!waitUntil([&] { return (target = find()).has_value(); })) {
        throw std::runtime_error("there is nothing to click on");
    }
    const support::Bounds& place = places_.at(std::stoul(target->object));
    command({{"do", "click"}, {"x", place.centreX()}, {"y", place.centreY()}});
}

}  // namespace tavrel::scenario
