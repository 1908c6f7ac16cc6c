#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrel {

/// Which request it is.
struct WireRequest {
    std::uint8_t opcode = 0;
    /// An extension's own number of the request.
    std::uint8_t minor = 0;

    friend bool operator==(const WireRequest&, const WireRequest&) = default;
};

/// What a client of an X server sends, taken apart, however it arrives.
class RequestStream {
public:
    struct Message {
        /// std::nullopt for the beginning of the connection.
        std::optional<WireRequest> request;
        std::string bytes;
    };

    /// Takes in the next bytes, and returns what has arrived whole.
    std::vector<Message> take(std::string_view bytes);

private:
    std::size_t nextLength() const;

    bool isSetUp_ = false;
    std::string pending_;
};

/// What an X server sends to a client, taken apart.
class AnswerStream {
public:
    enum class Kind { setUp, error, reply, event };
    struct Message {
        Kind kind = Kind::event;
        /// What it is the answer to; std::nullopt for an event and for the beginning.
        std::optional<WireRequest> request;
        std::string bytes;
    };

    /// To be told of each request, in their order.
    void note(WireRequest request);
    /// As above.
    std::vector<Message> take(std::string_view bytes);

private:
    std::size_t nextLength() const;
    Message describe(std::string bytes);

    bool isSetUp_ = false;
    std::string pending_;
    std::uint16_t requests_ = 0;
    std::map<std::uint16_t, WireRequest> unanswered_;
};

}  // namespace tavrel
