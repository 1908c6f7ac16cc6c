#include "tests/bench/Traffic.h"

#include <memory>

namespace tavrel::bench {

TrafficCount TrafficCount::operator-(const TrafficCount& earlier) const {
    return {.requests = requests - earlier.requests,
            .bytesToServer = bytesToServer - earlier.bytesToServer,
            .bytesFromServer = bytesFromServer - earlier.bytesFromServer,
            .roundTrips = roundTrips - earlier.roundTrips};
}

TrafficCount& TrafficCount::operator+=(const TrafficCount& more) {
    requests += more.requests;
    bytesToServer += more.bytesToServer;
    bytesFromServer += more.bytesFromServer;
    roundTrips += more.roundTrips;
    return *this;
}

void ConversationCount::fromClient(std::string_view bytes) {
    count_.bytesToServer += static_cast<long>(bytes.size());
    for (const RequestStream::Message& message : requests_.take(bytes)) {
        if (message.request.has_value()) {
            ++count_.requests;
            isAsking_ = true;
        }
    }
}

void ConversationCount::fromServer(std::string_view bytes) {
    count_.bytesFromServer += static_cast<long>(bytes.size());
    for (const AnswerStream::Message& message : answers_.take(bytes)) {
        if (message.kind == AnswerStream::Kind::reply && isAsking_) {
            ++count_.roundTrips;
            isAsking_ = false;
        }
    }
}

class Traffic::Conversation : public ServerRelay::Conversation {
public:
    explicit Conversation(Traffic& traffic) : traffic_(traffic) {}

    bool fromClient(std::string_view bytes, const ServerRelay::Send& toServer) override {
        if (!toServer(bytes)) {
            return false;
        }
        counted_.fromClient(bytes);
        tell();
        return true;
    }

    bool fromServer(std::string_view bytes, const ServerRelay::Send& toClient) override {
        if (!toClient(bytes)) {
            return false;
        }
        counted_.fromServer(bytes);
        tell();
        return true;
    }

private:
    void tell() {
        traffic_.add(counted_.count() - told_);
        told_ = counted_.count();
    }

    Traffic& traffic_;
    ConversationCount counted_;
    TrafficCount told_;
};

Traffic::Traffic(const std::string& server)
    : relay_(server, [this] { return std::make_unique<Conversation>(*this); }) {}

TrafficCount Traffic::count() {
    const std::lock_guard lock(mutex_);
    return count_;
}

void Traffic::add(const TrafficCount& more) {
    const std::lock_guard lock(mutex_);
    count_ += more;
}

}  // namespace tavrel::bench
