#pragma once

#include <cstdint>

namespace tavrel {

/// The window server's number for a display; never 0 for a real one.
using DisplayID = std::uint32_t;

/// The window server's answer to a request: 0 is success. The values are part of
/// what users see in error texts, so they keep the numbers of the Mac's window server.
using ServerStatus = std::int32_t;

namespace serverStatus {
inline constexpr ServerStatus success = 0;
inline constexpr ServerStatus failure = 1000;
inline constexpr ServerStatus illegalArgument = 1001;
inline constexpr ServerStatus cannotComplete = 1004;
inline constexpr ServerStatus notImplemented = 1006;
}  // namespace serverStatus

}  // namespace tavrel
