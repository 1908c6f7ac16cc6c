#pragma once

#include "platform/plasma/connection/ServerLink.h"
#include "platform/plasma/switching/LayoutServer.h"

namespace tavrel::plasma {

/// The server at the other end of a link. All positions are set each time, since the server
/// puts an output that it is told nothing of on top of another.
class PlasmaLayoutServer final : public LayoutServer {
public:
    /// `link` must outlive it.
    explicit PlasmaLayoutServer(ServerLink& link) : link_(link) {}

    std::optional<layout::Layout> read() override;
    Outcome apply(const layout::WholeLayout& wanted) override;

private:
    ServerLink& link_;
};

}  // namespace tavrel::plasma
