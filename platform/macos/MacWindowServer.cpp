#include "platform/macos/MacWindowServer.h"

#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

#include "display/control/DisplayControl.h"

namespace tavrel {

namespace {

/// The server answers -1 to any question about an identifier that it does not know (any
/// more). As a yes or no that would be a yes.
bool isYes(boolean_t answer) {
    return answer != 0 && static_cast<std::int32_t>(answer) != -1;
}

class LiveMoment final : public DisplayMoment {
public:
    std::optional<std::vector<DisplayID>> allDisplays() override {
        constexpr std::uint32_t room = 64;
        std::vector<DisplayID> displays(room, 0);
        std::uint32_t count = 0;
        if (DCTLGetDisplayList(room, displays.data(), &count) != serverStatus::success) {
            return std::nullopt;
        }
        displays.resize(std::min(count, room));
        return displays;
    }

    std::optional<std::vector<DisplayID>> onlineDisplays() override {
        std::uint32_t count = 0;
        if (CGGetOnlineDisplayList(0, nullptr, &count) != serverStatus::success) {
            return std::nullopt;
        }
        std::vector<DisplayID> displays(count, 0);
        if (CGGetOnlineDisplayList(count, displays.data(), &count) != serverStatus::success) {
            return std::nullopt;
        }
        displays.resize(std::min<std::size_t>(count, displays.size()));
        return displays;
    }

    bool isBuiltIn(DisplayID display) override { return isYes(CGDisplayIsBuiltin(display)); }
    bool isOnline(DisplayID display) override { return isYes(CGDisplayIsOnline(display)); }
    bool isActive(DisplayID display) override { return isYes(CGDisplayIsActive(display)); }
    std::uint32_t vendorNumber(DisplayID display) override {
        return CGDisplayVendorNumber(display);
    }
    std::uint32_t modelNumber(DisplayID display) override { return CGDisplayModelNumber(display); }
    std::uint32_t serialNumber(DisplayID display) override {
        return CGDisplaySerialNumber(display);
    }
};

}  // namespace

MacWindowServer::MacWindowServer() {
    resolveConfigureDisplayEnabled();
    resolveGetDisplayList();
}

bool MacWindowServer::canSwitch() {
    return DCTLCanControlDisplays();
}

ServerStatus MacWindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const auto lock = holdChanges();
    return DCTLSetDisplayEnabled(display, enabled);
}

std::unique_ptr<DisplayMoment> MacWindowServer::now() {
    return std::make_unique<LiveMoment>();
}

ServerStatus MacReconfigurationReports::registerCallback(DisplayReconfigurationCallback callback,
                                                         void* userInfo) {
    return CGDisplayRegisterReconfigurationCallback(callback, userInfo);
}

ServerStatus MacReconfigurationReports::removeCallback(DisplayReconfigurationCallback callback,
                                                       void* userInfo) {
    const auto lock = ownChanges_.holdChanges();
    return CGDisplayRemoveReconfigurationCallback(callback, userInfo);
}

}  // namespace tavrel
