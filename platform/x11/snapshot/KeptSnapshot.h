#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/LayoutSigns.h"
#include "platform/x11/snapshot/Snapshot.h"
#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel::x11 {

/// What a server says of its layout, for somebody who asks every second. It is read whole when
/// an event came or a sign has changed; else it is the last one again.
///
/// An event alone would be trusted too far, for what is at stake: so a question never goes
/// without signs of the server's own, and what was read is only kept once a second reading has
/// shown the very same. Thus neither an event that got lost, nor a change in the middle of a
/// reading, nor two in one tick of the server's clock are missed.
///
/// To be used by one thread, with one connection.
class KeptSnapshot {
public:
    /// Has the server tell `connection`, which must outlive this, of each change.
    explicit KeptSnapshot(Connection& connection);

    /// Blocks until the server has answered. The same object again only while nothing was read
    /// anew. Null when the connection is lost, or the server answers with errors time after time.
    std::shared_ptr<const Snapshot> read(Probing probing);

private:
    bool isStillShown();
    void readWhole(Probing probing);

    Connection& connection_;
    std::shared_ptr<const Snapshot> snapshot_;
    std::optional<LayoutSigns> signs_;
    bool isSettled_ = false;
    std::size_t turn_ = 0;
};

}  // namespace tavrel::x11
