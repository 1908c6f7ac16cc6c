#pragma once

#include <optional>
#include <span>

#include "platform/posix/FileDescriptor.h"

/// What the watchdog's process takes over from its parent, and what it leaves behind.
namespace tavrel::watchdog {

/// The connection to the application, as the program's arguments (its name first) give it.
/// std::nullopt unless they are one number, and that is a stream socket's descriptor, and
/// maybe a name after it.
std::optional<int> inheritedSocket(std::span<char* const> arguments);

/// Detaches the process from everything but the connection, which it returns: no other
/// descriptor stays open, its standard streams are /dev/null, it leads a session of its own,
/// its folder is the root, and it ignores the signals that ask programs to end.
///
/// To be called when the program starts, before there is a second thread.
FileDescriptor detachProcess(int socket);

}  // namespace tavrel::watchdog
