#pragma once

#include <plasma-outputs-client.h>
#include <wayland-client.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"
#include "platform/plasma/connection/Connection.h"
#include "platform/plasma/connection/OutputDevice.h"

namespace tavrel::plasma {

/// What a Plasma server has said of its outputs until one moment. Plain data.
struct OutputState {
    /// Without the numbers of their displays.
    std::vector<layout::Output> outputs = {};
    /// The connectors of what is on, the primary one first; std::nullopt where the server says
    /// nothing of an order.
    std::optional<std::vector<std::string>> order = {};
    /// Not the server's: the monitors met before, which say what display each is.
    layout::KnownMonitors known = {};
};

/// Who is connected where, in the state's order.
std::vector<layout::Identity> identitiesIn(const OutputState& state);

/// `state` in the words common to all window servers, in its order.
layout::Layout layoutOf(const OutputState& state);

/// The displays that are on, in the order in which the server gives them its panels, the primary
/// one first. Empty where it says nothing of an order.
std::vector<DisplayID> orderOf(const OutputState& state);

/// All outputs that a Plasma server describes, kept up to date while their connection passes
/// events on. To be used by the connection's thread.
class Outputs {
public:
    /// Begins to listen; what there is has been said after two round trips. `connection` must
    /// outlive it.
    explicit Outputs(Connection& connection);
    ~Outputs();
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    /// Whether the server lets its outputs be configured; it may have none at the moment.
    bool canConfigure() const { return management_ != nullptr; }

    /// Whether every output that was announced has been described.
    bool isWhole() const;

    /// By all the server has said until now.
    OutputState state() const;

    /// Those that are described and have not gone, in the order of `state`.
    std::vector<const OutputDevice*> devices() const;

    /// Grows with each description, order or removal.
    std::uint64_t changes() const;

    /// Null when the server offers none.
    kde_output_management_v2* management() const { return management_; }

private:
    struct Listeners;

    void take(std::uint32_t name, std::string_view interface, std::uint32_t version);
    void lose(std::uint32_t name);
    void addDevice(kde_output_device_v2* device, std::uint32_t name);

    wl_registry* registry_;
    kde_output_management_v2* management_ = nullptr;
    kde_output_device_registry_v2* deviceRegistry_ = nullptr;
    kde_output_order_v1* order_ = nullptr;
    std::vector<std::unique_ptr<OutputDevice>> devices_;
    /// The connectors of what is on, the primary one first; std::nullopt until the server says.
    std::optional<std::vector<std::string>> orderOfOutputs_;
    std::vector<std::string> nextOrder_;
    std::uint64_t changes_ = 0;
};

}  // namespace tavrel::plasma
