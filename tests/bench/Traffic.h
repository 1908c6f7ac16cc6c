#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "tests/platform/x11/connection/ServerRelay.h"
#include "tests/platform/x11/connection/WireStreams.h"

namespace tavrel::bench {

/// What programs and an X server have said to each other.
struct TrafficCount {
    long requests = 0;
    long bytesToServer = 0;
    long bytesFromServer = 0;
    /// How often somebody has asked, and been answered before they asked again.
    long roundTrips = 0;

    TrafficCount operator-(const TrafficCount& earlier) const;
    TrafficCount& operator+=(const TrafficCount& more);
};

/// Counts what one connection carries, however it arrives.
class ConversationCount {
public:
    void fromClient(std::string_view bytes);
    void fromServer(std::string_view bytes);

    const TrafficCount& count() const { return count_; }

private:
    TrafficCount count_;
    RequestStream requests_;
    AnswerStream answers_;
    bool isAsking_ = false;
};

/// Stands between programs and an X server, passes on what they say to each other, and counts it.
class Traffic {
public:
    /// `server` is a display name, ":7". Throws std::system_error when it cannot listen.
    explicit Traffic(const std::string& server);

    /// Where programs find the server through this.
    const std::string& displayName() const { return relay_.displayName(); }

    /// Of all connections so far.
    TrafficCount count();

private:
    class Conversation;

    void add(const TrafficCount& more);

    std::mutex mutex_;
    TrafficCount count_;
    // Its threads use what stands above.
    ServerRelay relay_;
};

}  // namespace tavrel::bench
