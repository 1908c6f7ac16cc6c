#pragma once

#include <cstddef>

namespace tavrel::simulatedMac {

/// How many transactions this process has begun and neither completed nor cancelled.
std::size_t openTransactions();

}  // namespace tavrel::simulatedMac
