#pragma once

#include <optional>
#include <vector>

#include "tests/scenario/Stage.h"
#include "tests/support/AccessibleWindow.h"

namespace tavrel::scenario {

/// What the application's window shows, as it describes it to assistive technology.
Window readWindow(const std::vector<support::AccessibleElement>& elements);

/// The switch of a row; std::nullopt when the row is busy or not there.
std::optional<support::AccessibleElement> findSwitch(
    const std::vector<support::AccessibleElement>& elements, Display display);

}  // namespace tavrel::scenario
