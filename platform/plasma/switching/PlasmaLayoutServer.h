#pragma once

#include <utility>

#include "platform/plasma/connection/ServerLink.h"
#include "platform/plasma/switching/LayoutServer.h"

namespace tavrel::plasma {

/// The server at the other end of a link. All positions are set each time, since the server
/// puts an output that it is told nothing of on top of another.
class PlasmaLayoutServer final : public LayoutServer {
public:
    /// `link` must outlive it. What is read takes the monitors for those `known`.
    explicit PlasmaLayoutServer(ServerLink& link, layout::KnownMonitors known = {})
        : link_(link), known_(std::move(known)) {}

    std::optional<layout::Layout> read() override;
    Outcome apply(const layout::WholeLayout& wanted) override;

private:
    OutputState stateOf(const Session& session) const;

    ServerLink& link_;
    const layout::KnownMonitors known_;
};

}  // namespace tavrel::plasma
