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
    /// How many share in its token. 0 is none: it has gone.
    int references = 0;
};

/// All that were begun, oldest first. Main thread only, like all that is here.
const std::vector<Activity>& activities();
void forgetActivities();

/// What the main loop does between events: lets go of what was handed out on loan.
void drainAutoreleasePool();

/// Whether the class NSProcessInfo is there.
void setHasProcessInfo(bool has);

}  // namespace tavrel::simulatedMac
