#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/Snapshot.h"
#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel::x11 {

/// A question about a part of the layout, and its answer.
struct Sign {
    enum class Question { monitors, screenSize, output, edid, primary };

    Question question = Question::monitors;
    /// The output in question, if it is about one.
    Xid output = 0;
    /// The reply, without its number in the connection.
    std::vector<std::uint8_t> answer = {};

    friend bool operator==(const Sign&, const Sign&) = default;
};

/// By what a layout that was read whole is seen to be still there, for a few hundred bytes.
struct LayoutSigns {
    /// A server may ask for it, to know what the questions are about.
    std::uint32_t configTimestamp = 0;
    std::vector<Sign> general;
    /// One for each display that is on.
    std::vector<Sign> shown;
    /// All else.
    std::vector<Sign> further;

    friend bool operator==(const LayoutSigns&, const LayoutSigns&) = default;
};

/// What a server says of its layout, for somebody who asks every second. It is read whole when
/// an event came or a sign has changed; else it is the last one again.
///
/// An event may get lost, and a user would be left without a screen: so the server is asked for
/// signs each time, and what was read is only kept once a second reading has shown the very same.
/// Thus neither an event that got lost, nor a change in the middle of a reading, nor two in one
/// tick of the server's clock are missed.
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
    /// Which of the signs that are asked for in turn are next.
    std::size_t turn_ = 0;
};

}  // namespace tavrel::x11
