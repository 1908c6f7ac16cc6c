#pragma once

#include <string>
#include <vector>

/// The calls that this process makes to the simulated system, written as in its source.
/// Questions about one display, and the handling of strings and data, are left out.
namespace tavrel::simulatedMac {

/// From any thread.
void note(std::string call);

/// All that were made since this was last asked.
std::vector<std::string> takeCalls();

}  // namespace tavrel::simulatedMac
