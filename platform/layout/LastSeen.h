#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"
#include "platform/layout/RememberedOutputs.h"

namespace tavrel::layout {

/// How each display was set up when it was last seen active, whoever has switched it off since.
/// `RememberedOutputs` knows only what was switched off here; when another program has
/// switched everything off, this brings it back as it was.
///
/// In memory only, for the life of the process. Thread-safe.
class LastSeen {
public:
    /// What the window server knows of an active output beyond its layout, as in
    /// `RememberedOutput`.
    using Notes = std::function<std::string(const Output&)>;

    /// Takes note of a layout. One in which nothing is active changes nothing.
    void see(const Layout& layout, const Notes& notes);

    /// `memory`, and how `display` was last seen where nothing is remembered of it.
    Memory completed(Memory memory, DisplayID display) const;

private:
    mutable std::mutex mutex_;
    Memory seen_;
};

}  // namespace tavrel::layout
