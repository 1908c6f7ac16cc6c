#pragma once

#include <vector>

#include "platform/layout/RememberedOutputs.h"

namespace tavrel::layout {

/// Displays that are on, each once, and where.
using Arrangement = std::vector<Standing>;

/// Whether two areas have part of an edge in common; a corner is not enough.
bool touch(const Area& a, const Area& b);

/// `arrangement` as a desktop that has no gaps: each display is next to another, all of them
/// hang together, and the first begins at 0,0. What hangs together already stays together, and
/// the rest is moved as little as it takes. What overlaps goes on doing so; nothing else does.
Arrangement withoutGaps(Arrangement arrangement);

}  // namespace tavrel::layout
