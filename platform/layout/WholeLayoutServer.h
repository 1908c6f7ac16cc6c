#pragma once

#include <optional>

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"
#include "platform/layout/WholeLayout.h"

namespace tavrel::layout {

/// A window server that is told, each time, what all its outputs are to show. For one thread at
/// a time.
class WholeLayoutServer {
public:
    virtual ~WholeLayoutServer() = default;

    struct Reading {
        /// Why there is no layout: 1004 when the server has answered with something else, 1006
        /// when it has gone or is silent.
        ServerStatus status = serverStatus::success;
        /// std::nullopt unless success.
        std::optional<Layout> layout = {};
    };
    virtual Reading read() = 0;

    enum class Outcome {
        /// As far as the server says.
        applied,
        /// All is as before.
        refused,
        /// All is as before: what it was planned for has changed.
        outdated,
        /// All is as before: no program may change it.
        forbidden,
        /// Nobody knows what became of it, but the server may be asked.
        lost,
        /// Nobody knows what becomes of it: the server has gone or is silent.
        silent,
    };
    /// Asks for what is planned for the layout that was read last, and waits for the answer.
    virtual Outcome apply(const WholeLayout& wanted) = 0;
};

}  // namespace tavrel::layout
