#pragma once

#include <cstddef>

namespace tavrel::simulatedMac {

/// From now on the system starts no work until it is let go on.
void holdWork();
void letWorkGoOn();

/// How many calls the system has been asked for and has not made.
std::size_t heldWork();

/// Returns when all that was started has ended.
void joinWork();

}  // namespace tavrel::simulatedMac
