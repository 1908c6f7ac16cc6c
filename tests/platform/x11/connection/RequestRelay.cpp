#include "tests/platform/x11/connection/RequestRelay.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrel {

class RequestRelay::Conversation : public ServerRelay::Conversation {
public:
    explicit Conversation(RequestRelay& relay) : relay_(relay) {}

    bool fromClient(std::string_view bytes, const ServerRelay::Send& toServer) override {
        const std::vector<RequestStream::Message> messages = requests_.take(bytes);
        return std::all_of(messages.begin(), messages.end(), [&](const auto& message) {
            if (message.request.has_value()) {
                relay_.listener_(*message.request);
                answers_.note(*message.request);
            }
            relay_.bytes_ += message.bytes.size();
            return toServer(message.bytes);
        });
    }

    bool fromServer(std::string_view bytes, const ServerRelay::Send& toClient) override {
        std::string kept;
        for (AnswerStream::Message& message : answers_.take(bytes)) {
            if (relay_.editor_ == nullptr || relay_.editor_(message)) {
                kept += message.bytes;
            }
        }
        relay_.bytes_ += kept.size();
        return toClient(kept);
    }

private:
    RequestRelay& relay_;
    RequestStream requests_;
    AnswerStream answers_;
};

RequestRelay::RequestRelay(const std::string& server, Listener listener, Editor editor)
    : listener_(std::move(listener)),
      editor_(std::move(editor)),
      relay_(server, [this] { return std::make_unique<Conversation>(*this); }) {}

}  // namespace tavrel
