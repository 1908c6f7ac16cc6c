#pragma once

#include "platform/DisplayID.h"
#include "platform/WallClock.h"

namespace tavrel {

/// One remembered display, as the registry stores it.
struct StoredDisplay {
    DisplayID id;
    /// Whether it is the machine's own panel, as last reported while it was online.
    bool isBuiltIn;
    /// When a merge last found it online.
    WallTime lastSeenAt;

    friend bool operator==(const StoredDisplay&, const StoredDisplay&) = default;
};

}  // namespace tavrel
