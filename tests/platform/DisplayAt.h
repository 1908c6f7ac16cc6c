#pragma once

#include <string>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel {

/// The display at that connector now; 0 when there is none.
inline DisplayID displayAt(DisplayQueries& server, const std::string& connector) {
    const auto moment = server.now();
    const auto all = moment->allDisplays().value_or(std::vector<DisplayID>{});
    for (const DisplayID display : all) {
        if (moment->hardware(display).connector == connector) {
            return display;
        }
    }
    return 0;
}

}  // namespace tavrel
