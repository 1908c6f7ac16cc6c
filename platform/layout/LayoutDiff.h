#pragma once

#include <cstdint>
#include <vector>

#include "platform/ReconfigurationReports.h"
#include "platform/layout/Layout.h"

namespace tavrel::layout {

/// What is reported of one display.
struct DisplayReport {
    DisplayID display = 0;
    /// Bits of `displayChange`.
    std::uint32_t flags = 0;

    friend bool operator==(const DisplayReport&, const DisplayReport&) = default;
};

/// One report for each display that was changed from one layout to the other, by ascending
/// number. One that went away is named as it was called before: without its monitor, an output
/// no longer tells which display it was.
std::vector<DisplayReport> reportsBetween(const Layout& before, const Layout& after);

}  // namespace tavrel::layout
