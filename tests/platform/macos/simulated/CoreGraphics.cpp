#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/Desk.h"

namespace {

using namespace tavrel::simulatedMac;

constexpr std::uint32_t unknown = 0xFFFFFFFF;

/// What `answer` says of the display, or −1 if the server does not know it.
template <typename Answer>
std::uint32_t ask(CGDirectDisplayID id, const Answer& answer) {
    return SharedState::ofThisProcess().with([&](State& state) -> std::uint32_t {
        const Display* display = find(state, id);
        const bool isKnown = display != nullptr && display->connected &&
                             (display->enabled || display->whenOff != Display::WhenOff::vanishes);
        return isKnown ? static_cast<std::uint32_t>(answer(*display)) : unknown;
    });
}

template <typename Answer>
boolean_t askWhether(CGDirectDisplayID id, const Answer& answer) {
    return static_cast<boolean_t>(ask(id, answer));
}

}  // namespace

extern "C" {

CGError CGGetOnlineDisplayList(std::uint32_t maxDisplays, CGDirectDisplayID* displays,
                               std::uint32_t* count) {
    return SharedState::ofThisProcess().with([&](State& state) {
        note("CGGetOnlineDisplayList(" + std::to_string(maxDisplays) + ")");
        const Refusals& refusals = state.refusals;
        const auto refusal = displays == nullptr ? refusals.onlineCount : refusals.onlineList;
        if (refusal != 0) {
            return static_cast<CGError>(refusal);
        }
        std::vector<CGDirectDisplayID> online;
        for (const Display& each : state.displays) {
            if (each.id != 0 && each.connected && each.enabled) {
                online.push_back(each.id);
            }
        }
        if (displays != nullptr) {
            online.resize(std::min<std::size_t>(online.size(), maxDisplays));
            std::copy(online.begin(), online.end(), displays);
        }
        const std::int32_t claimed = displays == nullptr ? 0 : refusals.claimed;
        *count = static_cast<std::uint32_t>(static_cast<std::int32_t>(online.size()) + claimed);
        return kCGErrorSuccess;
    });
}

boolean_t CGDisplayIsBuiltin(CGDirectDisplayID display) {
    return askWhether(display, [](const Display& each) { return each.builtIn; });
}

boolean_t CGDisplayIsOnline(CGDirectDisplayID display) {
    return askWhether(display, [](const Display& each) { return each.enabled; });
}

boolean_t CGDisplayIsActive(CGDirectDisplayID display) {
    return askWhether(display, [](const Display& each) { return each.enabled; });
}

std::uint32_t CGDisplayVendorNumber(CGDirectDisplayID display) {
    return ask(display, [](const Display& each) { return each.vendor; });
}

std::uint32_t CGDisplayModelNumber(CGDirectDisplayID display) {
    return ask(display, [](const Display& each) { return each.model; });
}

std::uint32_t CGDisplaySerialNumber(CGDirectDisplayID display) {
    return ask(display, [](const Display& each) { return each.serial; });
}
}
