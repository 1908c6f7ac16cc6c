#include "platform/x11/X11WindowServer.h"

#include <algorithm>
#include <vector>

#include "platform/x11/DisplayIdentifiers.h"
#include "platform/x11/LayoutSwitch.h"
#include "platform/x11/RandrLayoutServer.h"

namespace tavrel {

namespace {

std::vector<DisplayID> connectedDisplays(const x11::Snapshot& snapshot) {
    const auto identifiers = x11::displayIdentifiers(snapshot);
    std::vector<DisplayID> connected;
    for (const x11::Output& output : snapshot.outputs) {
        if (output.connected) {
            connected.push_back(identifiers.at(output.id));
        }
    }
    return connected;
}

}  // namespace

X11WindowServer::X11WindowServer(UserDefaults& store, const X11ServerOptions& options)
    : questionLink_(options), changeLink_(options), remembered_(store) {}

x11::Connection* X11WindowServer::usableConnection(x11::ServerLink& link) {
    x11::Connection* connection = link.connection();
    return connection != nullptr && connection->hasRandr() ? connection : nullptr;
}

std::optional<x11::Snapshot> X11WindowServer::ask() {
    const std::lock_guard lock(questionMutex_);
    x11::Connection* connection = usableConnection(questionLink_);
    return connection == nullptr ? std::nullopt : x11::RandrLayoutServer(*connection).read();
}

std::optional<x11::Output> X11WindowServer::find(DisplayID display) {
    const std::optional<x11::Snapshot> snapshot = ask();
    const x11::Output* output =
        snapshot.has_value() ? x11::connectedOutput(*snapshot, display) : nullptr;
    return output == nullptr ? std::nullopt : std::optional(*output);
}

bool X11WindowServer::canControlDisplays() {
    const std::lock_guard lock(questionMutex_);
    return usableConnection(questionLink_) != nullptr;
}

bool X11WindowServer::isWithoutRandr() {
    const std::lock_guard lock(questionMutex_);
    const x11::Connection* connection = questionLink_.connection();
    return connection != nullptr && !connection->hasRandr();
}

ServerStatus X11WindowServer::getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                             std::uint32_t* count) {
    const std::optional<x11::Snapshot> snapshot = ask();
    if (!snapshot.has_value()) {
        return serverStatus::notImplemented;
    }
    std::vector<DisplayID> connected = connectedDisplays(*snapshot);
    connected.resize(std::min<std::size_t>(connected.size(), maxCount));
    std::copy(connected.begin(), connected.end(), displays);
    *count = static_cast<std::uint32_t>(connected.size());
    return serverStatus::success;
}

ServerStatus X11WindowServer::getOnlineDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                                   std::uint32_t* count) {
    if (isWithoutRandr()) {
        // Its displays cannot be told apart, so none is known to be online; the list of
        // those remembered from elsewhere is still to be had.
        *count = 0;
        return serverStatus::success;
    }
    if (displays != nullptr) {
        return getDisplayList(maxCount, displays, count);
    }
    const std::optional<x11::Snapshot> snapshot = ask();
    if (!snapshot.has_value()) {
        return serverStatus::notImplemented;
    }
    *count = static_cast<std::uint32_t>(connectedDisplays(*snapshot).size());
    return serverStatus::success;
}

ServerStatus X11WindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const std::lock_guard lock(changeMutex_);
    x11::Connection* connection = usableConnection(changeLink_);
    if (connection == nullptr) {
        return serverStatus::notImplemented;
    }
    x11::RandrLayoutServer server(*connection);
    return x11::switchDisplay(server, remembered_, display, enabled);
}

bool X11WindowServer::isBuiltIn(DisplayID display) {
    const std::optional<x11::Output> output = find(display);
    return output.has_value() && x11::isBuiltInConnector(output->name);
}

bool X11WindowServer::isOnline(DisplayID display) {
    return find(display).has_value();
}

bool X11WindowServer::isActive(DisplayID display) {
    const std::optional<x11::Snapshot> snapshot = ask();
    const x11::Output* output =
        snapshot.has_value() ? x11::connectedOutput(*snapshot, display) : nullptr;
    return output != nullptr && snapshot->activeCrtc(*output) != nullptr;
}

std::uint32_t X11WindowServer::vendorNumber(DisplayID display) {
    return find(display).value_or(x11::Output{}).edid.vendor;
}

std::uint32_t X11WindowServer::modelNumber(DisplayID display) {
    return find(display).value_or(x11::Output{}).edid.product;
}

std::uint32_t X11WindowServer::serialNumber(DisplayID display) {
    return find(display).value_or(x11::Output{}).edid.serial;
}

}  // namespace tavrel
