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

/// Wakes a thread that sleeps in poll(): that thread polls `descriptor`, others call `wake`.
class WakeUp {
public:
    /// Throws std::system_error when the system is out of descriptors.
    WakeUp();

    /// Makes the descriptor readable. Never blocks. May be called from any thread and from a
    /// signal handler, and leaves errno as it was.
    void wake() const;

    /// Readable from the first `wake` on until `drain`. Not inherited by started programs.
    int descriptor() const { return pipe_.readEnd.number(); }

    /// Makes the descriptor wait for the next `wake`. Never blocks.
    void drain() const;

private:
    Pipe pipe_;
};

}  // namespace tavrel
