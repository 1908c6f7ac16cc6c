#include "display/DisplayIntegration.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "display/DisplayError.h"
#include "registry/DisplayRegistry.h"

namespace tavrel::DisplayIntegration {

namespace {

/// With this many online displays or more, the externals are numbered.
constexpr std::size_t numberedFrom = 3;

/// The list of all displays may hold entries that are not displays.
bool isReal(DisplayMoment& moment, DisplayID display) {
    return display != 0 && (moment.isBuiltIn(display) || moment.isOnline(display) ||
                            moment.vendorNumber(display) != 0 || moment.modelNumber(display) != 0 ||
                            moment.serialNumber(display) != 0);
}

/// The displays that are connected now: all real ones, or without any those that are online.
std::vector<DisplayID> presentDisplays(DisplayMoment& moment) {
    auto displays = moment.allDisplays().value_or(std::vector<DisplayID>{});
    std::erase_if(displays, [&](DisplayID display) { return !isReal(moment, display); });
    if (!displays.empty()) {
        return displays;
    }
    if (auto online = moment.onlineDisplays()) {
        return *std::move(online);
    }
    throw DisplayError::invalidDisplayList();
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

std::vector<DisplayDevice> fetchDisplays(DisplayQueries& queries, UserDefaults& userDefaults,
                                         WallClock& wallClock, const Words& words) {
    const auto moment = queries.nowAfterProbing();
    const auto online = presentDisplays(*moment);
    const bool numbered = online.size() >= numberedFrom;

    std::vector<DisplayDevice> displays;
    std::size_t externals = 0;
    for (const StoredDisplay& record :
         DisplayRegistry::merge(online, userDefaults, *moment, wallClock)) {
        const bool isOn = moment->isActive(record.id);
        if (record.isBuiltIn) {
            displays.emplace_back(record.id, words.builtInDisplay, DisplayDevice::Kind::builtIn,
                                  isOn);
        } else {
            displays.emplace_back(record.id, externalName(numbered, ++externals),
                                  DisplayDevice::Kind::external, isOn);
        }
        displays.back().hardware = moment->hardware(record.id);
    }
    std::stable_sort(displays.begin(), displays.end(), comesBefore);
    return displays;
}

}  // namespace tavrel::DisplayIntegration
