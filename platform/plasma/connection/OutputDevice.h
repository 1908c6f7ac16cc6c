#pragma once

#include <plasma-outputs-client.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/layout/Layout.h"

namespace tavrel::plasma {

/// An output as the server describes it, kept up to date while its connection passes events on.
/// To be used by the connection's thread, and destroyed before the connection.
class OutputDevice {
public:
    /// Owns `device`. `name` is that of its global; 0 for one that has none.
    OutputDevice(kde_output_device_v2* device, std::uint32_t name);
    ~OutputDevice();
    OutputDevice(const OutputDevice&) = delete;
    OutputDevice& operator=(const OutputDevice&) = delete;

    kde_output_device_v2* get() const { return device_; }
    std::uint32_t globalName() const { return globalName_; }
    /// Whether the server has said all of it.
    bool isDescribed() const { return isDescribed_; }
    bool isRemoved() const { return isRemoved_; }
    /// How often the server has said that a description is whole.
    std::uint64_t descriptions() const { return descriptions_; }
    /// What the server calls it where it speaks of the order of outputs.
    const std::string& connector() const { return connector_; }

    /// As a layout describes it, but for the number of its display.
    layout::Output describe() const;

    /// The server's own for one of the modes of `describe`; null when there is none (any more).
    kde_output_device_mode_v2* find(const layout::Mode& mode) const;

private:
    struct Listeners;

    struct Mode {
        Mode(OutputDevice& owner, kde_output_device_mode_v2* mode) : device(owner), proxy(mode) {}
        ~Mode() { kde_output_device_mode_v2_destroy(proxy); }
        Mode(const Mode&) = delete;
        Mode& operator=(const Mode&) = delete;

        OutputDevice& device;
        kde_output_device_mode_v2* proxy;
        layout::Mode description = {};
        bool isPreferred = false;
    };

    const Mode* currentMode() const;

    kde_output_device_v2* device_;
    std::uint32_t globalName_;
    bool isDescribed_ = false;
    bool isRemoved_ = false;
    std::uint64_t descriptions_ = 0;

    std::string connector_;
    std::string uuid_;
    layout::EdidNumbers edid_ = {};
    std::string monitor_;
    int x_ = 0;
    int y_ = 0;
    std::int32_t transform_ = WL_OUTPUT_TRANSFORM_NORMAL;
    wl_fixed_t scale_ = wl_fixed_from_int(1);
    bool isEnabled_ = false;
    std::vector<std::unique_ptr<Mode>> modes_;
    kde_output_device_mode_v2* current_ = nullptr;
};

/// The bytes that a base64 text stands for; none unless it is one, whole.
std::vector<std::uint8_t> decodeBase64(std::string_view text);

}  // namespace tavrel::plasma
