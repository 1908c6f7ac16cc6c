#pragma once

#include <vector>

#include "tests/platform/macos/simulated/State.h"

namespace tavrel::simulatedMac {

/// Calls this process's callbacks on this thread.
void report(const std::vector<Report>& reports);

/// What the main run loop does from time to time: calls this process's callbacks with the
/// reports of changes that others made. Main thread only.
void deliverReportsOfOthers();

}  // namespace tavrel::simulatedMac
