#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavrel::simulatedMac {

/// An activity that the process information object was asked to begin.
struct Activity {
    std::uint64_t options = 0;
    std::string reason;
    bool hasEnded = false;
    /// How many own its token; 0 when it has gone.
    int references = 0;
};

/// As new: no activity has been begun. Main thread only, like all that is here.
void resetActivities();

/// All that were begun, oldest first.
const std::vector<Activity>& activities();

/// What the main loop does between events: releases what was returned without an owner.
void drainAutoreleasePool();

/// Until the next reset there is no class NSProcessInfo.
void removeProcessInfo();

}  // namespace tavrel::simulatedMac
