#pragma once

#include <cstddef>

namespace tavrel::simulatedMac {

/// How many transactions this process has begun and neither completed nor cancelled.
std::size_t openTransactions();

/// The address of the private entry point that a process finds under `name`, if `offered`
/// has it; else null.
void* privateEntryPoint(const char* name, unsigned offered);

}  // namespace tavrel::simulatedMac
