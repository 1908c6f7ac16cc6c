#pragma once

#include <algorithm>
#include <optional>

#include "platform/DisplayQueries.h"

namespace tavrel::watchdog {

/// Whether anybody can see anything: whether any display is online and active. std::nullopt
/// when the server does not say: what it said before it fell silent may no longer be true.
inline std::optional<bool> hasUsableDisplay(DisplayMoment& moment) {
    const auto online = moment.onlineDisplays();
    if (!online || !moment.isCurrent()) {
        return std::nullopt;
    }
    return std::any_of(online->begin(), online->end(),
                       [&](DisplayID display) { return moment.isActive(display); });
}

}  // namespace tavrel::watchdog
