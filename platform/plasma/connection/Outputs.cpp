#include "platform/plasma/connection/Outputs.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace tavrel::plasma {

namespace {

// What is asked for is what the first versions of the protocols had; a later one may take
// more, and describe more, but is not to be told that we know of it.
constexpr std::uint32_t managementVersion = 3;
constexpr std::uint32_t deviceVersion = 2;
constexpr std::uint32_t orderVersion = 1;
/// The only exception: a registry of devices is of this version from the beginning, and so are
/// the devices it announces.
constexpr std::uint32_t registryVersion = 21;

template <typename Interface>
Interface* bindGlobal(wl_registry* registry, std::uint32_t name, const wl_interface& interface,
                      std::uint32_t version) {
    return static_cast<Interface*>(wl_registry_bind(registry, name, &interface, version));
}

/// Wayland has no largest desktop; sums of two places must still be numbers.
constexpr int largest = std::numeric_limits<int>::max() / 4;

std::vector<DisplayID> inOrder(const std::vector<std::string>& connectors,
                               const layout::Layout& layout) {
    std::vector<DisplayID> order;
    for (const std::string& connector : connectors) {
        for (const layout::Output& output : layout.outputs) {
            if (output.isActive() && output.identity.connector == connector) {
                order.push_back(output.display);
            }
        }
    }
    return order;
}

}  // namespace

std::vector<layout::Identity> identitiesIn(const OutputState& state) {
    std::vector<layout::Identity> identities;
    for (const layout::Output& output : state.outputs) {
        identities.push_back(output.identity);
    }
    return identities;
}

layout::Layout layoutOf(const OutputState& state) {
    layout::Layout layout{.outputs = state.outputs, .maxWidth = largest, .maxHeight = largest};
    layout::numberOutputs(layout, state.known);
    if (state.order.has_value()) {
        const std::vector<DisplayID> order = inOrder(*state.order, layout);
        layout.primary = order.empty() ? 0 : order.front();
    }
    return layout;
}

std::vector<DisplayID> orderOf(const OutputState& state) {
    return state.order.has_value() ? inOrder(*state.order, layoutOf(state))
                                   : std::vector<DisplayID>{};
}

struct Outputs::Listeners {
    static const wl_registry_listener registry;
    static const kde_output_device_registry_v2_listener deviceRegistry;
    static const kde_output_order_v1_listener order;

    static Outputs& self(void* data) { return *static_cast<Outputs*>(data); }
};

const wl_registry_listener Outputs::Listeners::registry{
    .global = [](void* data, wl_registry*, std::uint32_t name, const char* interface,
                 std::uint32_t version) { self(data).take(name, interface, version); },
    .global_remove = [](void* data, wl_registry*, std::uint32_t name) { self(data).lose(name); }};

const kde_output_device_registry_v2_listener Outputs::Listeners::deviceRegistry{
    // Said only to those who have asked for an end.
    .finished = [](void*, auto*) {},
    .output = [](void* data, auto*,
                 kde_output_device_v2* device) { self(data).addDevice(device, 0); }};

const kde_output_order_v1_listener Outputs::Listeners::order{
    .output = [](void* data, auto*, const char* name) { self(data).nextOrder_.emplace_back(name); },
    .done =
        [](void* data, auto*) {
            self(data).orderOfOutputs_ = std::exchange(self(data).nextOrder_, {});
            ++self(data).changes_;
        }};

Outputs::Outputs(Connection& connection) : registry_(wl_display_get_registry(connection.get())) {
    wl_registry_add_listener(registry_, &Listeners::registry, this);
}

Outputs::~Outputs() {
    devices_.clear();
    if (order_ != nullptr) {
        kde_output_order_v1_destroy(order_);
    }
    if (deviceRegistry_ != nullptr) {
        kde_output_device_registry_v2_destroy(deviceRegistry_);
    }
    if (management_ != nullptr) {
        kde_output_management_v2_destroy(management_);
    }
    wl_registry_destroy(registry_);
}

void Outputs::take(std::uint32_t name, std::string_view interface, std::uint32_t version) {
    if (interface == kde_output_device_v2_interface.name) {
        addDevice(bindGlobal<kde_output_device_v2>(registry_, name, kde_output_device_v2_interface,
                                                   std::min(version, deviceVersion)),
                  name);
    } else if (interface == kde_output_device_registry_v2_interface.name &&
               deviceRegistry_ == nullptr && version >= registryVersion) {
        deviceRegistry_ = bindGlobal<kde_output_device_registry_v2>(
            registry_, name, kde_output_device_registry_v2_interface, registryVersion);
        kde_output_device_registry_v2_add_listener(deviceRegistry_, &Listeners::deviceRegistry,
                                                   this);
    } else if (interface == kde_output_management_v2_interface.name && management_ == nullptr) {
        management_ = bindGlobal<kde_output_management_v2>(registry_, name,
                                                           kde_output_management_v2_interface,
                                                           std::min(version, managementVersion));
    } else if (interface == kde_output_order_v1_interface.name && order_ == nullptr) {
        order_ = bindGlobal<kde_output_order_v1>(registry_, name, kde_output_order_v1_interface,
                                                 orderVersion);
        kde_output_order_v1_add_listener(order_, &Listeners::order, this);
    }
}

void Outputs::lose(std::uint32_t name) {
    const auto gone =
        std::erase_if(devices_, [&](const auto& device) { return device->globalName() == name; });
    changes_ += gone;
}

void Outputs::addDevice(kde_output_device_v2* device, std::uint32_t name) {
    devices_.push_back(std::make_unique<OutputDevice>(device, name));
}

std::vector<const OutputDevice*> Outputs::devices() const {
    std::vector<const OutputDevice*> present;
    for (const auto& device : devices_) {
        if (device->isDescribed() && !device->isRemoved()) {
            present.push_back(device.get());
        }
    }
    return present;
}

bool Outputs::isWhole() const {
    return std::all_of(devices_.begin(), devices_.end(),
                       [](const auto& device) { return device->isDescribed(); });
}

OutputState Outputs::state() const {
    OutputState state{.order = orderOfOutputs_};
    for (const OutputDevice* device : devices()) {
        state.outputs.push_back(device->describe());
    }
    return state;
}

std::uint64_t Outputs::changes() const {
    return std::accumulate(devices_.begin(), devices_.end(), changes_,
                           [](std::uint64_t sum, const auto& device) {
                               return sum + device->descriptions() + (device->isRemoved() ? 1 : 0);
                           });
}

}  // namespace tavrel::plasma
