#pragma once

#include <optional>
#include <utility>

#include "platform/layout/WholeLayoutServer.h"
#include "platform/plasma/connection/ServerLink.h"

namespace tavrel::plasma {

/// The server at the other end of a link, as one that takes whole layouts. It may say that it has
/// carried one out and have done only a part, so it is looked at again; what is not as it was
/// asked for is taken back.
class PlasmaLayoutServer final : public layout::WholeLayoutServer {
public:
    /// `link` must outlive it. The monitors `known` say which display each of its monitors is.
    explicit PlasmaLayoutServer(ServerLink& link, layout::KnownMonitors known = {})
        : link_(link), known_(std::move(known)) {}

    Reading read() override;
    Outcome apply(const layout::WholeLayout& wanted) override;

private:
    OutputState stateOf(const Session& session) const;
    std::optional<layout::Layout> look();
    Outcome ask(const layout::WholeLayout& wanted);

    ServerLink& link_;
    const layout::KnownMonitors known_;
    /// Read last.
    layout::Layout layout_;
};

}  // namespace tavrel::plasma
