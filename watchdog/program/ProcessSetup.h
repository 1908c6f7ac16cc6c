#pragma once

#include <optional>
#include <span>

#include "platform/posix/FileDescriptor.h"

/// What the process of a guard must and must not take over from its parent.
namespace tavrel::watchdog {

/// The descriptor that the program's arguments (its name first) say is the connection to
/// the application. Nothing unless they say just that, and it is a stream socket.
std::optional<int> inheritedSocket(std::span<char* const> arguments);

/// Cuts the process loose from everything but the connection: no other descriptor stays
/// open, its standard streams lead nowhere, it leads a session of its own, keeps no folder
/// in use, and outlives the signals that ask programs to end. Returns the connection.
///
/// For the start of the program, before there is a second thread.
FileDescriptor leaveSurroundings(int socket);

}  // namespace tavrel::watchdog
