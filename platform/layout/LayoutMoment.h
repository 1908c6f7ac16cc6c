#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/layout/Layout.h"

namespace tavrel::layout {

/// The answers that `layout` gives. A display is online when it is connected, and both lists
/// name every one that is, in the layout's order.
std::unique_ptr<DisplayMoment> momentOf(Layout layout, bool isCurrent);
/// The same of one that is not null, and may be asked about more than once.
std::unique_ptr<DisplayMoment> momentOf(std::shared_ptr<const Layout> layout, bool isCurrent);

/// The answers of a window server that cannot be asked about its displays: it knows none, and
/// has no list but that of the `online`, if there is one.
std::unique_ptr<DisplayMoment> silentMoment(std::optional<std::vector<DisplayID>> online,
                                            bool isCurrent);

/// Whether anybody is known to see anything, by these answers.
bool showsAnything(DisplayMoment& moment);

}  // namespace tavrel::layout
