#pragma once

#include "platform/layout/LastWord.h"
#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What an X server says at one moment.
struct Word {
    /// Without it there is no snapshot either.
    bool hasRandr = true;
    Snapshot snapshot = {};
};

using LastWord = layout::LastWord<Word>;

/// How that asks the X server: over a connection that is made anew whenever there is none.
LastWord::MakeAsk askingServer(const X11ServerOptions& options);

}  // namespace tavrel::x11
