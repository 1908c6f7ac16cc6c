#pragma once

#include "platform/posix/FileDescriptor.h"

namespace tavrel {

/// Both ends of a pipe that no started program inherits.
struct Pipe {
    /// Throws std::system_error.
    Pipe();

    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

}  // namespace tavrel
