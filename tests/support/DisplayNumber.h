#pragma once

#include <optional>
#include <string>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::support {

/// A number for an X server that no other test gets while this exists, in whatever process. What
/// is left of a test may still look for its server when that has gone, a watchdog for seconds:
/// it must find nobody there, and above all not the server of another test.
class DisplayNumber {
public:
    /// One that nobody holds. Throws std::runtime_error when there is none.
    DisplayNumber();

    int value() const { return value_; }
    /// As in the DISPLAY variable, ":107".
    std::string name() const { return ":" + std::to_string(value_); }

private:
    int value_ = 0;
    FileDescriptor held_;
};

/// The number that an X server writes to a pipe, when told to by -displayfd, as soon as it accepts
/// connections; std::nullopt when it ends first or writes nothing.
std::optional<int> readDisplayNumber(const FileDescriptor& pipe);

}  // namespace tavrel::support
