#pragma once

#include <cstddef>

namespace tavrel::simulatedMac {

/// From now on the system starts none of the work it is given, until `resumeWork`.
void holdWork();
void resumeWork();

/// How much work the system has been given and has not started.
std::size_t heldWork();

/// Returns when all work that was started has ended.
void joinWork();

}  // namespace tavrel::simulatedMac
