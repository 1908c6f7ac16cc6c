#pragma once

#include <memory>

#include "platform/layout/LastWord.h"
#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What an X server says at one moment.
struct Word {
    /// Null on a server without RandR. The same object as before only while the server shows
    /// what it showed before.
    std::shared_ptr<const Snapshot> snapshot;
};

using LastWord = layout::LastWord<Word>;

/// How that asks the X server: over a connection that is made anew whenever there is none.
LastWord::MakeAsk askingServer(const X11ServerOptions& options);

}  // namespace tavrel::x11
