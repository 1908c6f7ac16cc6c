#include "platform/plasma/connection/OutputDevice.h"

#include <algorithm>
#include <cstddef>

namespace tavrel::plasma {

namespace {

/// libwayland ends the process at an event nobody takes, so every one needs a taker.
constexpr auto ignored = [](auto...) {};

}  // namespace

struct OutputDevice::Listeners {
    static const kde_output_device_v2_listener device;
    static const kde_output_device_mode_v2_listener mode;

    static OutputDevice& self(void* data) { return *static_cast<OutputDevice*>(data); }
    static Mode& selfMode(void* data) { return *static_cast<Mode*>(data); }

    static void geometry(void* data, kde_output_device_v2* /*device*/, std::int32_t x,
                         std::int32_t y, std::int32_t /*width*/, std::int32_t /*height*/,
                         std::int32_t /*subpixel*/, const char* /*make*/, const char* /*model*/,
                         std::int32_t transform) {
        self(data).x_ = x;
        self(data).y_ = y;
        self(data).transform_ = transform;
    }
    static void addMode(void* data, kde_output_device_v2* /*device*/,
                        kde_output_device_mode_v2* added) {
        OutputDevice& owner = self(data);
        owner.modes_.push_back(std::make_unique<Mode>(owner, added));
        kde_output_device_mode_v2_add_listener(added, &mode, owner.modes_.back().get());
    }
    static void removeMode(void* data, kde_output_device_mode_v2* removed) {
        OutputDevice& owner = selfMode(data).device;
        if (owner.current_ == removed) {
            owner.current_ = nullptr;
        }
        std::erase_if(owner.modes_, [&](const auto& each) { return each->proxy == removed; });
    }
    static void setSize(void* data, kde_output_device_mode_v2* /*mode*/, std::int32_t width,
                        std::int32_t height) {
        selfMode(data).description.width = width;
        selfMode(data).description.height = height;
    }
};

const kde_output_device_mode_v2_listener OutputDevice::Listeners::mode{
    .size = setSize,
    .refresh = [](void* data, auto*,
                  std::int32_t refresh) { selfMode(data).description.refreshMillihertz = refresh; },
    .preferred = [](void* data, auto*) { selfMode(data).isPreferred = true; },
    .removed = removeMode,
    .flags = ignored};

const kde_output_device_v2_listener OutputDevice::Listeners::device{
    .geometry = geometry,
    .current_mode = [](void* data, auto*,
                       kde_output_device_mode_v2* mode) { self(data).current_ = mode; },
    .mode = addMode,
    .done =
        [](void* data, auto*) {
            self(data).isDescribed_ = true;
            ++self(data).descriptions_;
        },
    .scale = [](void* data, auto*, wl_fixed_t factor) { self(data).scale_ = factor; },
    .edid =
        [](void* data, auto*, const char* raw) {
            const std::vector<std::uint8_t> edid = decodeBase64(raw);
            self(data).edid_ = layout::parseEdid(edid);
            self(data).monitor_ = layout::monitorName(edid);
        },
    .enabled = [](void* data, auto*,
                  std::int32_t enabled) { self(data).isEnabled_ = enabled != 0; },
    .uuid = [](void* data, auto*, const char* uuid) { self(data).uuid_ = uuid; },
    .serial_number = ignored,
    .eisa_id = ignored,
    .capabilities = ignored,
    .overscan = ignored,
    .vrr_policy = ignored,
    .rgb_range = ignored,
    .name = [](void* data, auto*, const char* name) { self(data).connector_ = name; },
    .high_dynamic_range = ignored,
    .sdr_brightness = ignored,
    .wide_color_gamut = ignored,
    .auto_rotate_policy = ignored,
    .icc_profile_path = ignored,
    .brightness_metadata = ignored,
    .brightness_overrides = ignored,
    .sdr_gamut_wideness = ignored,
    .color_profile_source = ignored,
    .brightness = ignored,
    .color_power_tradeoff = ignored,
    .dimming = ignored,
    .replication_source = ignored,
    .ddc_ci_allowed = ignored,
    .max_bits_per_color = ignored,
    .max_bits_per_color_range = ignored,
    .automatic_max_bits_per_color_limit = ignored,
    .edr_policy = ignored,
    .sharpness = ignored,
    .priority = ignored,
    .auto_brightness = ignored,
    .removed = [](void* data, auto*) { self(data).isRemoved_ = true; }};

OutputDevice::OutputDevice(kde_output_device_v2* device, std::uint32_t name)
    : device_(device), globalName_(name) {
    kde_output_device_v2_add_listener(device, &Listeners::device, this);
}

OutputDevice::~OutputDevice() {
    modes_.clear();
    if (kde_output_device_v2_get_version(device_) >= KDE_OUTPUT_DEVICE_V2_RELEASE_SINCE_VERSION) {
        kde_output_device_v2_release(device_);
    } else {
        kde_output_device_v2_destroy(device_);
    }
}

const OutputDevice::Mode* OutputDevice::currentMode() const {
    const auto found = std::find_if(modes_.begin(), modes_.end(),
                                    [&](const auto& each) { return each->proxy == current_; });
    return found == modes_.end() ? nullptr : found->get();
}

layout::Output OutputDevice::describe() const {
    // The first versions of the protocol give no name.
    layout::Output output{
        .identity = {.connector = connector_.empty() ? uuid_ : connector_, .edid = edid_},
        .isConnected = true,
        .monitor = monitor_};
    output.isBuiltIn = layout::isBuiltInConnector(output.identity.connector);
    for (const bool isPreferred : {true, false}) {
        for (const auto& mode : modes_) {
            if (mode->isPreferred == isPreferred) {
                output.modes.push_back(mode->description);
            }
        }
    }
    if (const Mode* mode = currentMode(); mode != nullptr && isEnabled_) {
        layout::Shown& shown = output.shown.emplace();
        shown.mode = mode->description;
        shown.rotation =
            layout::rotationOf(static_cast<std::uint32_t>(transform_)).value_or(layout::rotate0);
        // A server that says nonsense is not to make us divide by it.
        shown.scale = scale_ > 0 ? wl_fixed_to_double(scale_) : 1;
        shown.area = layout::Layout().areaOf(shown.mode, shown.rotation, shown.scale);
        shown.area.x = x_;
        shown.area.y = y_;
    }
    return output;
}

kde_output_device_mode_v2* OutputDevice::find(const layout::Mode& mode) const {
    const auto found = std::find_if(modes_.begin(), modes_.end(),
                                    [&](const auto& each) { return each->description == mode; });
    return found == modes_.end() ? nullptr : (*found)->proxy;
}

std::vector<std::uint8_t> decodeBase64(std::string_view text) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t group = 4;
    constexpr unsigned bitsOfDigit = 6;
    constexpr unsigned bitsOfByte = 8;
    if (text.size() % group != 0) {
        return {};
    }
    const std::string_view body = text.substr(0, text.find_last_not_of('=') + 1);
    if (text.size() - body.size() > 2) {
        return {};
    }
    std::vector<std::uint8_t> bytes;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : body) {
        const std::size_t digit = digits.find(character);
        if (digit == std::string_view::npos) {
            return {};
        }
        bits = bits << bitsOfDigit | static_cast<std::uint32_t>(digit);
        count += bitsOfDigit;
        if (count >= bitsOfByte) {
            count -= bitsOfByte;
            bytes.push_back(static_cast<std::uint8_t>(bits >> count));
        }
    }
    return bytes;
}

}  // namespace tavrel::plasma
