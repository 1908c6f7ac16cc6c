#pragma once

#include "platform/DisplayID.h"

namespace tavrel {

/// The bits of a reconfiguration report, numbered as the Mac's window server does
/// (its public "display change summary flags").
namespace displayChange {
inline constexpr std::uint32_t beginConfiguration = 0x1;
inline constexpr std::uint32_t moved = 0x2;
inline constexpr std::uint32_t setMain = 0x4;
inline constexpr std::uint32_t setMode = 0x8;
inline constexpr std::uint32_t add = 0x10;
inline constexpr std::uint32_t remove = 0x20;
inline constexpr std::uint32_t enabled = 0x100;
inline constexpr std::uint32_t disabled = 0x200;
inline constexpr std::uint32_t mirror = 0x400;
inline constexpr std::uint32_t unMirror = 0x800;
inline constexpr std::uint32_t desktopShapeChanged = 0x1000;
}  // namespace displayChange

using DisplayReconfigurationCallback = void (*)(DisplayID display, std::uint32_t flags,
                                                void* userInfo);

/// Where the window server's reports of layout changes come from.
class ReconfigurationReports {
public:
    virtual ~ReconfigurationReports() = default;

    /// Calls `callback` with `userInfo` for each later report, on any thread and possibly on
    /// several at once. `userInfo` is not owned. Returns 0, or the server's status when
    /// nothing was registered.
    virtual ServerStatus registerCallback(DisplayReconfigurationCallback callback,
                                          void* userInfo) = 0;

    /// Ends the reports to this pair. Blocks until its calls on other threads have returned;
    /// no further one is made. May be called from within such a call.
    virtual ServerStatus removeCallback(DisplayReconfigurationCallback callback,
                                        void* userInfo) = 0;
};

}  // namespace tavrel
