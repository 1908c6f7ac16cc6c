#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/DisplayID.h"
#include "tests/scenario/Stage.h"
#include "tests/support/AccessibleWindow.h"

namespace tavrel::scenario {

/// What the application's window shows, as it describes it to assistive technology.
Window readWindow(const std::vector<support::AccessibleElement>& elements);

/// The switch of a row; std::nullopt when the row is busy or not there.
std::optional<support::AccessibleElement> findSwitch(
    const std::vector<support::AccessibleElement>& elements, Display display);

/// The names of displays in the order of the window's rows, which are sorted by number.
std::vector<std::string> inOrderOfRows(const std::vector<DisplayID>& displays,
                                       const std::vector<std::string>& names);

}  // namespace tavrel::scenario
