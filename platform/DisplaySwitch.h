#pragma once

#include "platform/DisplayID.h"

namespace tavrel {

/// The one change this application makes: taking a display out of the desktop layout and
/// bringing it back.
///
/// Thread-safe: every call may come from any thread. No call throws.
class DisplaySwitch {
public:
    virtual ~DisplaySwitch() = default;

    /// Returns whether displays can be switched at all on this system. Constant for the life
    /// of the process on a Mac; elsewhere it may turn false when the server goes away.
    virtual bool canSwitch() = 0;

    /// Takes `display` into the desktop layout or out of it, and returns when the server has
    /// confirmed or refused. One that is so already stays as it is; if it was to be
    /// switched on, it no longer counts as switched off by this application.
    ///
    /// Returns 0, or the server's status unchanged: 1001 for a display it does not know,
    /// 1004 when it refused, 1006 when it offers no such control or does not answer. After 1006
    /// it may have made the change, or still make it; after any other result than 0 and that
    /// the layout is as it was.
    virtual ServerStatus setDisplayEnabled(DisplayID display, bool enabled) = 0;
};

}  // namespace tavrel
