#pragma once

#include <chrono>
#include <memory>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/Snapshot.h"
#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel::x11 {

/// What a server says of its displays, and what it said last while it says nothing. It is asked
/// on a thread with a connection of its own, so that nobody has to wait for a slow one.
///
/// Thread-safe.
class LastWord {
public:
    /// How long whoever asks is kept waiting. Then the server is silent, and until it speaks again
    /// nobody is kept waiting at all.
    static constexpr std::chrono::milliseconds patience{3000};

    enum class Server {
        /// It can't be reached, has gone, or hasn't said anything yet.
        absent,
        withoutRandr,
        present,
    };

    struct Answer {
        Server server = Server::absent;
        /// Null unless present.
        std::shared_ptr<const Snapshot> snapshot = nullptr;
        /// Whether it is as of now, and not what was said before the server fell silent.
        bool isFresh = true;
    };

    /// Does nothing before the first question.
    explicit LastWord(X11ServerOptions options);
    /// Blocks at most for the patience; a thread that still waits for a silent server is left
    /// behind.
    ~LastWord();
    LastWord(const LastWord&) = delete;
    LastWord& operator=(const LastWord&) = delete;

    /// Returns what the server says now. Blocks at most for the patience, or for the options'
    /// timeout where that is shorter; to be asked with `Probing::always`, which takes its time,
    /// always for the timeout. A server that is silent for longer, but isn't known to be gone,
    /// is answered for by what it said last.
    Answer ask(Probing probing);

private:
    struct State;

    static void serve(State& state);

    std::shared_ptr<State> state_;
};

}  // namespace tavrel::x11
