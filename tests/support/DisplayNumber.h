#pragma once

#include <optional>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::support {

/// The number that an X server writes to a pipe, when told to by -displayfd, as soon as it accepts
/// connections; std::nullopt when it ends first or writes nothing.
std::optional<int> readDisplayNumber(const FileDescriptor& pipe);

}  // namespace tavrel::support
