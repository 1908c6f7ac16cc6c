#pragma once

#include "platform/DisplayID.h"

namespace tavrel {

/// The window server's private side: the list that still names displays taken out of
/// the layout, and the one change this application makes.
///
/// Thread-safe: every call may come from any thread. No call throws.
class DisplayLifecycle {
public:
    virtual ~DisplayLifecycle() = default;

    /// Whether displays can be switched at all on this system. Constant for the life of
    /// the process on a Mac; elsewhere it may turn false when the server goes away.
    virtual bool canControlDisplays() = 0;

    /// Fills `displays` with at most `maxCount` identifiers and sets `count`.
    ///
    /// Returns 0 or the server's status; 1006 where there is no such list, and then
    /// neither `displays` nor `count` has been touched. `displays` has room for
    /// `maxCount` entries; both pointers stay the caller's.
    virtual ServerStatus getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                        std::uint32_t* count) = 0;

    /// Takes `display` into the desktop layout or out of it, and returns when the
    /// server has confirmed or refused.
    ///
    /// Returns 0, or the server's status unchanged: 1001 for a display it does not
    /// know, 1004 when it refused, 1006 when it offers no such control. After any
    /// other result than 0 the layout is as it was.
    virtual ServerStatus setDisplayEnabled(DisplayID display, bool enabled) = 0;
};

}  // namespace tavrel
