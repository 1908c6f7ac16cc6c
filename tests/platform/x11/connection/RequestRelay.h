#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

#include "tests/platform/x11/connection/ServerRelay.h"
#include "tests/platform/x11/connection/WireStreams.h"

namespace tavrel {

/// Passes on what programs and a real X server say to each other, and tells of each request just
/// before the server gets it. Whoever is told can hold the server up at exactly that request, and
/// can have the server say something else than it does.
class RequestRelay {
public:
    using Request = WireRequest;
    /// Both are called on a thread of the relay's.
    using Listener = std::function<void(Request)>;
    /// May change what the server says, but not its length. Returns false for what is to be lost.
    using Editor = std::function<bool(AnswerStream::Message&)>;

    /// Throws std::system_error when it can't listen. `server` is a display name, ":7".
    RequestRelay(const std::string& server, Listener listener, Editor editor = nullptr);

    /// Where programs find the server through this.
    const std::string& displayName() const { return relay_.displayName(); }
    /// How many bytes have been passed on, in both directions.
    std::size_t bytes() const { return bytes_; }

private:
    class Conversation;

    const Listener listener_;
    const Editor editor_;
    std::atomic<std::size_t> bytes_ = 0;
    // Its threads use what stands above.
    ServerRelay relay_;
};

}  // namespace tavrel
