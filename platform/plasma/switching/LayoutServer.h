#pragma once

#include <optional>

#include "platform/layout/Layout.h"
#include "platform/layout/WholeLayout.h"

namespace tavrel::plasma {

/// A server that is told what all its outputs are to show. For one thread at a time.
class LayoutServer {
public:
    virtual ~LayoutServer() = default;

    /// std::nullopt when it has gone, or is silent.
    virtual std::optional<layout::Layout> read() = 0;

    enum class Outcome {
        applied,
        /// All is as before.
        refused,
        /// The connection ended before the server said what became of it.
        lost,
        /// It did not say so in time, and may still do it.
        silent,
    };
    /// Asks for what is planned by the layout that was read last, and waits for the answer.
    virtual Outcome apply(const layout::WholeLayout& wanted) = 0;
};

}  // namespace tavrel::plasma
