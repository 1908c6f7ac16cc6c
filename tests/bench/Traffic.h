#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/posix/FileDescriptor.h"
#include "tests/platform/x11/connection/LoopbackListener.h"

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
    std::size_t nextRequest() const;
    std::size_t nextMessage() const;

    TrafficCount count_;
    std::string toServer_;
    std::string toClient_;
    bool clientHasSetUp_ = false;
    bool serverHasSetUp_ = false;
    bool isAsking_ = false;
};

/// Stands between programs and an X server, passes on what they say to each other, and counts it.
class Traffic {
public:
    /// `server` is a display name, ":7". Throws std::system_error when it cannot listen.
    explicit Traffic(const std::string& server);
    /// Ends all connections.
    ~Traffic();
    Traffic(const Traffic&) = delete;
    Traffic& operator=(const Traffic&) = delete;

    /// Where programs find the server through this.
    const std::string& displayName() const { return socket_.displayName(); }

    /// Of all connections so far.
    TrafficCount count();

private:
    void accept();
    void relay(const FileDescriptor& client);
    void add(const TrafficCount& more);

    const std::string serverPath_;
    LoopbackListener socket_;
    std::atomic<bool> stop_ = false;
    std::mutex mutex_;
    TrafficCount count_;
    std::vector<std::thread> relays_;
    std::thread acceptor_;
};

}  // namespace tavrel::bench
