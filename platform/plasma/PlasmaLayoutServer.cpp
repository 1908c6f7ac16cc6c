#include "platform/plasma/PlasmaLayoutServer.h"

#include <plasma-outputs-client.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/layout/WholeLayout.h"
#include "platform/plasma/connection/Outputs.h"

namespace tavrel::plasma {

namespace {

/// A whole layout on its way to the server. All positions are set, since the server puts an
/// output that it is told nothing of on top of another.
class Configuration {
public:
    /// `state` is what `outputs` says at the moment. To be used before anything else arrives.
    Configuration(const Outputs& outputs, const OutputState& state);
    ~Configuration();
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    /// Returns false when the server has no such display, or no such mode of it; then it is not
    /// to be applied.
    bool fill(const layout::WholeLayout& wanted);

    /// Returns false when the connection has ended, or the server stays silent.
    bool apply(Connection& connection);

    /// Whether the server says that it has been carried out.
    bool isApplied() const { return isApplied_; }

private:
    static const kde_output_configuration_v2_listener listener;

    bool place(const layout::WholeLayout::Place& place);
    void arrange(const std::vector<DisplayID>& order, const std::vector<DisplayID>& off);
    void setPriority(DisplayID display, std::uint32_t priority);
    /// Null when there is none.
    const OutputDevice* find(DisplayID display) const;
    void answer(bool isApplied);

    const std::vector<const OutputDevice*> devices_;
    /// Of the same outputs, in the same order.
    const layout::Layout layout_;
    const std::vector<DisplayID> orderNow_;
    kde_output_configuration_v2* configuration_;
    bool isAnswered_ = false;
    bool isApplied_ = false;
};

/// The primary first; the others in the order they have.
std::vector<DisplayID> wantedOrder(const layout::WholeLayout& wanted,
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

const kde_output_configuration_v2_listener Configuration::listener{
    .applied = [](void* data, auto*) { static_cast<Configuration*>(data)->answer(true); },
    .failed = [](void* data, auto*) { static_cast<Configuration*>(data)->answer(false); }};

Configuration::Configuration(const Outputs& outputs, const OutputState& state)
    : devices_(outputs.devices()),
      layout_(layoutOf(state)),
      orderNow_(orderOf(state)),
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
    arrange(wantedOrder(wanted, orderNow_), off);
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
    kde_output_configuration_v2_transform(
        configuration_, device->get(),
        static_cast<std::int32_t>(layout::transformOf(shown.rotation)));
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

/// What has come on must be what was asked for; where it stands, the server has confirmed.
bool isCarriedOut(const layout::WholeLayout& wanted, const layout::Layout& before,
                  const layout::Layout& now) {
    return std::all_of(wanted.places.begin(), wanted.places.end(), [&](const auto& place) {
        const layout::Output* output = now.output(place.display);
        if (output == nullptr || output->isActive() != place.shown.has_value()) {
            return false;
        }
        const layout::Output* was = before.output(place.display);
        const bool hasComeOn = output->isActive() && (was == nullptr || !was->isActive());
        return !hasComeOn || (output->shown->mode == place.shown->mode &&
                              output->shown->rotation == place.shown->rotation);
    });
}

}  // namespace

layout::WholeLayoutServer::Reading PlasmaLayoutServer::read() {
    std::optional<layout::Layout> now = look();
    if (!now.has_value()) {
        return {.status = serverStatus::notImplemented};
    }
    layout_ = *now;
    return {.layout = std::move(now)};
}

layout::WholeLayoutServer::Outcome PlasmaLayoutServer::apply(const layout::WholeLayout& wanted) {
    const Outcome outcome = ask(wanted);
    if (outcome != Outcome::applied) {
        return outcome;
    }
    const std::optional<layout::Layout> now = look();
    if (!now.has_value()) {
        return Outcome::lost;
    }
    if (isCarriedOut(wanted, layout_, *now)) {
        return Outcome::applied;
    }
    return ask(layout::wholeOf(layout_)) == Outcome::silent ? Outcome::silent : Outcome::refused;
}

std::optional<layout::Layout> PlasmaLayoutServer::look() {
    const Session* session = link_.session();
    return session == nullptr ? std::nullopt : std::optional(layoutOf(stateOf(*session)));
}

OutputState PlasmaLayoutServer::stateOf(const Session& session) const {
    OutputState state = session.outputs->state();
    state.known = known_;
    return state;
}

layout::WholeLayoutServer::Outcome PlasmaLayoutServer::ask(const layout::WholeLayout& wanted) {
    const Session* session = link_.current();
    if (session == nullptr || session->connection->isLost()) {
        return Outcome::lost;
    }
    Configuration configuration(*session->outputs, stateOf(*session));
    if (!configuration.fill(wanted)) {
        return Outcome::refused;
    }
    if (!configuration.apply(*session->connection)) {
        return session->connection->hasTimedOut() ? Outcome::silent : Outcome::lost;
    }
    return configuration.isApplied() ? Outcome::applied : Outcome::refused;
}

}  // namespace tavrel::plasma
