#include "tests/simulated/SimulatedWindowServer.h"

#include <algorithm>
#include <optional>

namespace tavrel {

class SimulatedWindowServer::Moment : public DisplayMoment {
public:
    explicit Moment(SimulatedWindowServer& server) : server_(server) {}

    std::optional<std::vector<DisplayID>> allDisplays() override {
        if (!server_.hasPrivateList_) {
            return std::nullopt;
        }
        return server_.listed([](const auto& display) { return display.connected; });
    }
    std::optional<std::vector<DisplayID>> onlineDisplays() override {
        if (!server_.hasOnlineList_) {
            return std::nullopt;
        }
        return server_.listed([this](const auto& display) { return server_.online(display); });
    }
    bool isBuiltIn(DisplayID display) override {
        const SimulatedDisplay* there = server_.query(display);
        return there != nullptr && there->builtIn;
    }
    bool isOnline(DisplayID display) override {
        const SimulatedDisplay* there = server_.query(display);
        return there != nullptr && server_.online(*there);
    }
    bool isActive(DisplayID display) override {
        const SimulatedDisplay* there = server_.query(display);
        return there != nullptr && there->enabled;
    }
    std::uint32_t vendorNumber(DisplayID display) override {
        const SimulatedDisplay* there = server_.query(display);
        return there == nullptr ? 0 : there->vendor;
    }
    std::uint32_t modelNumber(DisplayID display) override {
        const SimulatedDisplay* there = server_.query(display);
        return there == nullptr ? 0 : there->model;
    }
    std::uint32_t serialNumber(DisplayID display) override {
        const SimulatedDisplay* there = server_.query(display);
        return there == nullptr ? 0 : there->serial;
    }
    DisplayHardware hardware(DisplayID display) override {
        const SimulatedDisplay* there = server_.query(display);
        return there == nullptr ? DisplayHardware() : there->hardware;
    }

private:
    SimulatedWindowServer& server_;
};

void SimulatedWindowServer::connect(const SimulatedDisplay& display) {
    report(display.id, displayChange::beginConfiguration);
    replaceSilently(display);
    report(display.id, displayChange::add);
}

void SimulatedWindowServer::replaceSilently(const SimulatedDisplay& display) {
    ++generation_;
    if (SimulatedDisplay* there = known(display.id)) {
        *there = display;
    } else {
        displays_.push_back(display);
    }
}

void SimulatedWindowServer::disconnect(DisplayID display) {
    SimulatedDisplay* there = known(display);
    if (there == nullptr || !there->connected) {
        return;
    }
    report(display, displayChange::beginConfiguration);
    // Looked up again: who received the report may have connected another one.
    known(display)->connected = false;
    ++generation_;
    report(display, displayChange::remove);
}

void SimulatedWindowServer::switchFromOutside(DisplayID display, bool enabled) {
    SimulatedDisplay* there = known(display);
    if (there != nullptr && there->connected && there->enabled != enabled) {
        change(*there, enabled);
    }
}

void SimulatedWindowServer::report(DisplayID display, std::uint32_t flags) {
    const std::vector<Callback> callbacks = callbacks_;
    for (const auto& [callback, userInfo] : callbacks) {
        callback(display, flags, userInfo);
    }
}

void SimulatedWindowServer::change(SimulatedDisplay& display, bool enabled) {
    const DisplayID id = display.id;
    report(id, displayChange::beginConfiguration);
    known(id)->enabled = enabled;
    ++generation_;
    std::uint32_t flags = enabled ? displayChange::enabled : displayChange::disabled;
    if (whenOff_ == WhenOff::goesOffline) {
        flags |= enabled ? displayChange::add : displayChange::remove;
    }
    report(id, flags);
}

SimulatedDisplay* SimulatedWindowServer::known(DisplayID display) {
    const auto found = std::find_if(displays_.begin(), displays_.end(),
                                    [&](const auto& each) { return each.id == display; });
    return found == displays_.end() ? nullptr : &*found;
}

const SimulatedDisplay* SimulatedWindowServer::find(DisplayID display) const {
    const auto found = std::find_if(displays_.begin(), displays_.end(),
                                    [&](const auto& each) { return each.id == display; });
    return found == displays_.end() ? nullptr : &*found;
}

bool SimulatedWindowServer::isLive(DisplayID display) const {
    const SimulatedDisplay* there = find(display);
    return there != nullptr && online(*there) && there->enabled;
}

const SimulatedDisplay* SimulatedWindowServer::query(DisplayID display) {
    ++queries_;
    const SimulatedDisplay* there = find(display);
    return there != nullptr && there->connected ? there : nullptr;
}

bool SimulatedWindowServer::online(const SimulatedDisplay& display) const {
    return display.connected && (display.enabled || whenOff_ == WhenOff::staysOnline);
}

std::vector<DisplayID> SimulatedWindowServer::listed(
    const std::function<bool(const SimulatedDisplay&)>& isListed) const {
    std::vector<DisplayID> found;
    for (const SimulatedDisplay& display : displays_) {
        if (isListed(display)) {
            found.push_back(display.id);
        }
    }
    return found;
}

std::unique_ptr<DisplayMoment> SimulatedWindowServer::now() {
    ++moments_;
    return std::make_unique<Moment>(*this);
}

ServerStatus SimulatedWindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    changes_.emplace_back(display, enabled);
    if (!canControl_) {
        return serverStatus::notImplemented;
    }
    SimulatedDisplay* there = known(display);
    if (there == nullptr || !there->connected) {
        return serverStatus::illegalArgument;
    }
    if (there->enabled != enabled) {
        change(*there, enabled);
    }
    return serverStatus::success;
}

ServerStatus SimulatedWindowServer::registerCallback(DisplayReconfigurationCallback callback,
                                                     void* userInfo) {
    if (registrationStatus_ == serverStatus::success) {
        callbacks_.emplace_back(callback, userInfo);
    }
    return registrationStatus_;
}

ServerStatus SimulatedWindowServer::removeCallback(DisplayReconfigurationCallback callback,
                                                   void* userInfo) {
    std::erase(callbacks_, Callback{callback, userInfo});
    return serverStatus::success;
}

}  // namespace tavrel
