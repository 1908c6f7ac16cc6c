#include "platform/plasma/switching/Configuration.h"

#include <algorithm>
#include <cstddef>

namespace tavrel::plasma {

namespace {

/// The primary first; the others in the order they have.
std::vector<DisplayID> orderOf(const layout::WholeLayout& wanted,
                               const std::vector<DisplayID>& orderNow) {
    std::vector<DisplayID> order;
    const auto add = [&](DisplayID display) {
        if (wanted.shown(display).has_value() &&
            std::find(order.begin(), order.end(), display) == order.end()) {
            order.push_back(display);
        }
    };
    add(wanted.primary);
    std::for_each(orderNow.begin(), orderNow.end(), add);
    for (const auto& place : wanted.places) {
        add(place.display);
    }
    return order;
}

}  // namespace

const kde_output_configuration_v2_listener Configuration::listener{
    .applied = [](void* data, auto*) { static_cast<Configuration*>(data)->answer(true); },
    .failed = [](void* data, auto*) { static_cast<Configuration*>(data)->answer(false); }};

Configuration::Configuration(const Outputs& outputs, const OutputState& state)
    : devices_(outputs.devices()),
      layout_(layoutOf(state)),
      orderNow_(plasma::orderOf(state)),
      configuration_(kde_output_management_v2_create_configuration(outputs.management())) {
    kde_output_configuration_v2_add_listener(configuration_, &listener, this);
}

Configuration::~Configuration() {
    kde_output_configuration_v2_destroy(configuration_);
}

bool Configuration::fill(const layout::WholeLayout& wanted) {
    std::vector<DisplayID> off;
    for (const auto& each : wanted.places) {
        if (!place(each)) {
            return false;
        }
        if (!each.shown.has_value()) {
            off.push_back(each.display);
        }
    }
    arrange(orderOf(wanted, orderNow_), off);
    return true;
}

bool Configuration::apply(Connection& connection) {
    kde_output_configuration_v2_apply(configuration_);
    return connection.await([this] { return isAnswered_; });
}

bool Configuration::place(const layout::WholeLayout::Place& place) {
    const OutputDevice* device = find(place.display);
    if (device == nullptr) {
        return false;
    }
    kde_output_configuration_v2_enable(configuration_, device->get(), place.shown ? 1 : 0);
    if (!place.shown.has_value()) {
        return true;
    }
    const layout::Shown& shown = *place.shown;
    kde_output_device_mode_v2* mode = device->find(shown.mode);
    if (mode == nullptr) {
        return false;
    }
    kde_output_configuration_v2_mode(configuration_, device->get(), mode);
    kde_output_configuration_v2_transform(configuration_, device->get(),
                                          transformOf(shown.rotation));
    kde_output_configuration_v2_position(configuration_, device->get(), shown.area.x, shown.area.y);
    kde_output_configuration_v2_scale(configuration_, device->get(),
                                      wl_fixed_from_double(shown.scale));
    return true;
}

/// `order` is that of all displays that are to be on, `off` are the others.
void Configuration::arrange(const std::vector<DisplayID>& order,
                            const std::vector<DisplayID>& off) {
    const std::uint32_t version = kde_output_configuration_v2_get_version(configuration_);
    if (version >= KDE_OUTPUT_CONFIGURATION_V2_SET_PRIORITY_SINCE_VERSION) {
        std::uint32_t priority = 0;
        for (const DisplayID display : order) {
            setPriority(display, ++priority);
        }
        for (const DisplayID display : off) {
            setPriority(display, 0);
        }
    } else if (version >= KDE_OUTPUT_CONFIGURATION_V2_SET_PRIMARY_OUTPUT_SINCE_VERSION &&
               !order.empty()) {
        kde_output_configuration_v2_set_primary_output(configuration_, find(order.front())->get());
    }
}

void Configuration::setPriority(DisplayID display, std::uint32_t priority) {
    kde_output_configuration_v2_set_priority(configuration_, find(display)->get(), priority);
}

const OutputDevice* Configuration::find(DisplayID display) const {
    for (std::size_t i = 0; i < devices_.size(); ++i) {
        if (layout_.outputs[i].display == display) {
            return devices_[i];
        }
    }
    return nullptr;
}

void Configuration::answer(bool isApplied) {
    isAnswered_ = true;
    isApplied_ = isApplied;
}

}  // namespace tavrel::plasma
