#include "tests/platform/plasma/StandInServer.h"

/// What clients can ask of the stand-in.
namespace tavrel {

namespace {

/// For requests that nobody is to make.
constexpr auto unexpected = [](wl_client* client, auto...) { wl_client_post_no_memory(client); };

}  // namespace

const struct kde_output_management_v2_interface StandInPlasma::Server::management {
    .create_configuration = [](wl_client* client, wl_resource* resource, std::uint32_t id) {
        wl_resource* made = wl_resource_create(client, &kde_output_configuration_v2_interface,
                                               wl_resource_get_version(resource), id);
        wl_resource_set_implementation(
            made, &configuration,
            new Configuration{self(wl_resource_get_user_data(resource)), {}, false},
            [](wl_resource* gone) { delete &configurationOf(gone); });
    }
};

const struct kde_output_configuration_v2_interface StandInPlasma::Server::configuration {
    .enable = [](wl_client*, wl_resource* self, wl_resource* device,
                 std::int32_t enable) { configurationOf(self).of(device).isEnabled = enable != 0; },
    .mode =
        [](wl_client*, wl_resource* self, wl_resource* device, wl_resource* mode) {
            auto* const owner = static_cast<Device*>(wl_resource_get_user_data(device));
            const auto& modes = owner->modes[device];
            const auto found = std::find(modes.begin(), modes.end(), mode);
            configurationOf(self).isFaulty |= found == modes.end();
            configurationOf(self).of(device).mode = static_cast<std::size_t>(found - modes.begin());
        },
    .transform =
        [](wl_client*, wl_resource* self, wl_resource* device, std::int32_t transform) {
            configurationOf(self).of(device).transform = transform;
        },
    .position =
        [](wl_client*, wl_resource* self, wl_resource* device, std::int32_t x, std::int32_t y) {
            configurationOf(self).of(device).x = x;
            configurationOf(self).of(device).y = y;
        },
    .scale =
        [](wl_client*, wl_resource* self, wl_resource* device, wl_fixed_t scale) {
            configurationOf(self).of(device).scale = wl_fixed_to_double(scale);
        },
    .apply = [](wl_client* client,
                wl_resource* self) { configurationOf(self).server.apply(client, self); },
    .destroy = [](wl_client*, wl_resource* self) { wl_resource_destroy(self); },
    .overscan = unexpected, .set_vrr_policy = unexpected, .set_rgb_range = unexpected,
    .set_primary_output = unexpected,
    .set_priority = [](wl_client*, wl_resource* self, wl_resource* device, std::uint32_t priority) {
        configurationOf(self).of(device).priority = priority;
    }
};

const struct kde_output_device_v2_interface StandInPlasma::Server::deviceRequests {
    .release = [](wl_client*, wl_resource* self) { wl_resource_destroy(self); }
};
const struct kde_output_device_registry_v2_interface StandInPlasma::Server::registryRequests {
    .stop = unexpected
};
const struct kde_output_order_v1_interface StandInPlasma::Server::orderRequests {
    .destroy = [](wl_client*, wl_resource* self) { wl_resource_destroy(self); }
};

}  // namespace tavrel
