#include "display/DisplayIntegration.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>

#include "display/DisplayError.h"
#include "registry/DisplayRegistry.h"

namespace tavrel::DisplayIntegration {

namespace {

constexpr std::size_t privateListLimit = 64;
/// From this many online displays on, externals are told apart by number.
constexpr std::size_t numberedFrom = 3;

/// The private list may hold entries that stand for no display at all.
bool isReal(DisplayQueries& queries, DisplayID display) {
    return display != 0 &&
           (queries.isBuiltIn(display) || queries.isOnline(display) ||
            queries.vendorNumber(display) != 0 || queries.modelNumber(display) != 0 ||
            queries.serialNumber(display) != 0);
}

/// What the private list names; nothing when it fails or names no real display.
std::vector<DisplayID> privateList(DisplayLifecycle& lifecycle, DisplayQueries& queries) {
    std::array<DisplayID, privateListLimit> listed{};
    std::uint32_t count = 0;
    if (lifecycle.getDisplayList(privateListLimit, listed.data(), &count) !=
        serverStatus::success) {
        return {};
    }
    std::vector<DisplayID> real;
    std::copy_if(
        listed.begin(),
        listed.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(count, listed.size())),
        std::back_inserter(real), [&](DisplayID display) { return isReal(queries, display); });
    return real;
}

std::vector<DisplayID> publicList(DisplayQueries& queries) {
    std::uint32_t count = 0;
    if (queries.getOnlineDisplayList(0, nullptr, &count) != serverStatus::success) {
        throw DisplayError::invalidDisplayList();
    }
    std::vector<DisplayID> listed(count, 0);
    if (queries.getOnlineDisplayList(count, listed.data(), &count) != serverStatus::success) {
        throw DisplayError::invalidDisplayList();
    }
    listed.resize(std::min<std::size_t>(count, listed.size()));
    return listed;
}

std::vector<DisplayID> onlineList(DisplayLifecycle& lifecycle, DisplayQueries& queries) {
    auto online = privateList(lifecycle, queries);
    return online.empty() ? publicList(queries) : online;
}

std::string externalName(bool numbered, std::size_t number) {
    return numbered ? "External Display " + std::to_string(number) : "External Display";
}

bool comesBefore(const DisplayDevice& a, const DisplayDevice& b) {
    if (a.kind() != b.kind()) {
        return a.kind() == DisplayDevice::Kind::builtIn;
    }
    return a.name() < b.name();
}

}  // namespace

std::vector<DisplayDevice> fetchDisplays(DisplayLifecycle& lifecycle, DisplayQueries& queries,
                                         UserDefaults& userDefaults, WallClock& wallClock) {
    const auto online = onlineList(lifecycle, queries);
    const bool numbered = online.size() >= numberedFrom;

    std::vector<DisplayDevice> displays;
    std::size_t externals = 0;
    for (const StoredDisplay& record :
         DisplayRegistry::merge(online, userDefaults, queries, wallClock)) {
        const bool isOn = queries.isActive(record.id);
        if (record.isBuiltIn) {
            displays.emplace_back(record.id, "MacBook Display", DisplayDevice::Kind::builtIn, isOn);
        } else {
            displays.emplace_back(record.id, externalName(numbered, ++externals),
                                  DisplayDevice::Kind::external, isOn);
        }
    }
    std::stable_sort(displays.begin(), displays.end(), comesBefore);
    return displays;
}

}  // namespace tavrel::DisplayIntegration
