#include "platform/x11/X11WindowServer.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/layout/Layout.h"
#include "platform/x11/crtc/LayoutSwitch.h"
#include "platform/x11/crtc/RandrLayoutServer.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel {

namespace {

using DisplayList = std::optional<std::vector<DisplayID>>;

/// What a server says that cannot be asked about displays, but for `online`.
class SilentMoment : public DisplayMoment {
public:
    SilentMoment(DisplayList online, bool isCurrent)
        : online_(std::move(online)), isCurrent_(isCurrent) {}

    bool isCurrent() override { return isCurrent_; }
    DisplayList allDisplays() override { return std::nullopt; }
    DisplayList onlineDisplays() override { return online_; }
    bool isBuiltIn(DisplayID /*display*/) override { return false; }
    bool isOnline(DisplayID /*display*/) override { return false; }
    bool isActive(DisplayID /*display*/) override { return false; }
    std::uint32_t vendorNumber(DisplayID /*display*/) override { return 0; }
    std::uint32_t modelNumber(DisplayID /*display*/) override { return 0; }
    std::uint32_t serialNumber(DisplayID /*display*/) override { return 0; }

private:
    const DisplayList online_;
    const bool isCurrent_;
};

/// What one snapshot says.
class SnapshotMoment : public DisplayMoment {
public:
    SnapshotMoment(const x11::Snapshot& snapshot, bool isCurrent)
        : layout_(x11::layoutOf(snapshot)), isCurrent_(isCurrent) {}

    bool isCurrent() override { return isCurrent_; }
    DisplayList allDisplays() override { return onlineDisplays(); }
    /// In the server's order.
    DisplayList onlineDisplays() override {
        std::vector<DisplayID> connected;
        for (const layout::Output& output : layout_.outputs) {
            if (output.isConnected) {
                connected.push_back(output.display);
            }
        }
        return connected;
    }
    bool isBuiltIn(DisplayID display) override {
        const layout::Output* output = find(display);
        return output != nullptr && layout::isBuiltInConnector(output->identity.connector);
    }
    bool isOnline(DisplayID display) override { return find(display) != nullptr; }
    bool isActive(DisplayID display) override {
        const layout::Output* output = find(display);
        return output != nullptr && output->shown.has_value();
    }
    std::uint32_t vendorNumber(DisplayID display) override { return edid(display).vendor; }
    std::uint32_t modelNumber(DisplayID display) override { return edid(display).product; }
    std::uint32_t serialNumber(DisplayID display) override { return edid(display).serial; }

private:
    const layout::Output* find(DisplayID display) const {
        const layout::Output* output = layout_.output(display);
        return output != nullptr && output->isConnected ? output : nullptr;
    }
    layout::EdidNumbers edid(DisplayID display) const {
        const layout::Output* output = find(display);
        return output == nullptr ? layout::EdidNumbers{} : output->identity.edid;
    }

    const layout::Layout layout_;
    const bool isCurrent_;
};

std::unique_ptr<DisplayMoment> momentOf(const x11::LastWord::Answer& answer) {
    switch (answer.server) {
        case x11::LastWord::Server::present:
            return std::make_unique<SnapshotMoment>(*answer.snapshot, answer.isFresh);
        case x11::LastWord::Server::withoutRandr:
            // Its displays cannot be told apart, so none is known to be online; those remembered
            // from elsewhere can still be listed.
            return std::make_unique<SilentMoment>(std::vector<DisplayID>{}, answer.isFresh);
        case x11::LastWord::Server::absent:
            break;
    }
    return std::make_unique<SilentMoment>(std::nullopt, answer.isFresh);
}

}  // namespace

X11WindowServer::X11WindowServer(UserDefaults& store, const X11ServerOptions& options)
    : lastWord_(options), changeLink_(options), remembered_(store) {}

bool X11WindowServer::canSwitch() {
    return lastWord_.ask(x11::Probing::never).server == x11::LastWord::Server::present;
}

ServerStatus X11WindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const std::lock_guard lock(changeMutex_);
    x11::Connection* connection = changeLink_.connection();
    if (connection == nullptr || !connection->hasRandr()) {
        return serverStatus::notImplemented;
    }
    // Whoever misses a display may have just plugged it in.
    x11::RandrLayoutServer server(*connection,
                                  enabled ? x11::Probing::always : x11::Probing::onContradiction);
    return x11::switchDisplay(server, remembered_, lastSeen_, display, enabled);
}

std::unique_ptr<DisplayMoment> X11WindowServer::now() {
    return ask(x11::Probing::never);
}

std::unique_ptr<DisplayMoment> X11WindowServer::nowAfterProbing() {
    return ask(x11::Probing::always);
}

std::unique_ptr<DisplayMoment> X11WindowServer::ask(x11::Probing probing) {
    const x11::LastWord::Answer answer = lastWord_.ask(probing);
    if (answer.snapshot != nullptr) {
        x11::noteSeen(lastSeen_, *answer.snapshot);
    }
    return momentOf(answer);
}

}  // namespace tavrel
