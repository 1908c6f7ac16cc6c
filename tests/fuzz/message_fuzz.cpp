#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "tests/fuzz/Require.h"
#include "tests/watchdog/ReportedDisplays.h"
#include "watchdog/program/WatchdogService.h"
#include "watchdog/protocol/Message.h"
#include "watchdog/protocol/SwitchedOff.h"

/// What a watchdog makes of any bytes at all, compared with what it should make of them.
///
/// The first byte of the input says in what pieces the others arrive; they are the stream.
namespace tavrel::watchdog {
namespace {

using fuzz::require;
using Kind = Message::Kind;
using Bytes = std::span<const std::uint8_t>;
using Changes = std::vector<std::pair<DisplayID, bool>>;

/// Displays below 2^30 can be switched, for those up to 2^31 the server does not answer, and
/// there are no others; records every attempt.
class RecordingSwitch : public DisplaySwitch {
public:
    static ServerStatus statusFor(DisplayID display) {
        return display >> 30U == 0   ? serverStatus::success
               : display >> 31U == 0 ? serverStatus::notImplemented
                                     : serverStatus::illegalArgument;
    }

    bool canSwitch() override { return true; }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        changes.emplace_back(display, enabled);
        return statusFor(display);
    }

    Changes changes;
};

/// An application that sends these bytes and is then gone.
class ByteChannel : public MessageChannel {
public:
    ByteChannel(Bytes bytes, std::size_t piece) : rest_(bytes), piece_(piece) {}

    bool send(const Message& message) override {
        sent.push_back(message);
        return true;
    }
    Received receive(std::chrono::milliseconds /*timeout*/) override {
        while (!rest_.empty()) {
            const std::size_t size = std::min({piece_, rest_.size(), reader_.missing()});
            const auto result = reader_.add(rest_.first(size));
            rest_ = rest_.subspan(size);
            if (result) {
                const auto* message = std::get_if<Message>(&*result);
                return message != nullptr ? Received(*message) : NoMessage::malformed;
            }
        }
        return NoMessage::gone;
    }
    void hangUp() override { rest_ = {}; }

    std::vector<Message> sent;

private:
    Bytes rest_;
    std::size_t piece_;
    MessageReader reader_;
};

/// What a watchdog should do, written as plainly as possible.
struct Expectation {
    Changes changes;
    std::vector<Message> sent{{.kind = Kind::ready}};
    SwitchedOff off;
    SwitchedOff handedOver;

    explicit Expectation(Bytes stream) {
        bool isOver = false;
        for (; stream.size() >= messageSize && !isOver; stream = stream.subspan(messageSize)) {
            const auto decoded = decode(stream.first(messageSize));
            const auto* message = std::get_if<Message>(&decoded);
            if (message == nullptr) {
                break;
            }
            require(std::ranges::equal(encode(*message), stream.first(messageSize)),
                    "what is understood is what was written");
            isOver = !handle(*message);
        }
        switchAllOn();
    }

    bool handle(const Message& message) {
        switch (message.kind) {
            case Kind::alreadyOff:
                off.add(message.display);
                return true;
            case Kind::handOver:
                off.remove(message.display);
                handedOver.add(message.display);
                return true;
            case Kind::switchOff:
            case Kind::switchOn: {
                const ServerStatus status = RecordingSwitch::statusFor(message.display);
                const bool enabled = message.kind == Kind::switchOn;
                changes.emplace_back(message.display, enabled);
                sent.push_back({.kind = Kind::answer, .id = message.id, .status = status});
                if (enabled &&
                    (status == serverStatus::success || status == serverStatus::illegalArgument)) {
                    handedOver.remove(message.display);
                }
                if (status == serverStatus::success && enabled) {
                    off.remove(message.display);
                } else if (status != serverStatus::illegalArgument && !enabled) {
                    off.add(message.display);
                }
                return true;
            }
            case Kind::heartbeat:
                return true;
            case Kind::ready:
            case Kind::answer:
            case Kind::goodbye:
                break;
        }
        return false;
    }

    void switchAllOn() {
        for (const DisplayID display : handedOver.displays()) {
            off.add(display);
        }
        for (int attempt = 0; attempt < insistentAttempts; ++attempt) {
            const std::vector<DisplayID> all = off.displays();
            for (auto display = all.rbegin(); display != all.rend(); ++display) {
                changes.emplace_back(*display, true);
                if (RecordingSwitch::statusFor(*display) == serverStatus::success) {
                    off.remove(*display);
                }
            }
        }
    }
};

void check(Bytes input) {
    if (input.empty()) {
        return;
    }
    const std::size_t piece = input.front() % messageSize + 1;
    const Bytes stream = input.subspan(1);

    RecordingSwitch displays;
    ByteChannel channel(stream, piece);
    ReportedDisplays silent;
    WatchdogService(displays, silent, channel, [](auto) {}).run();

    const Expectation expected(stream);
    require(displays.changes == expected.changes, "only what was asked for is changed");
    require(channel.sent == expected.sent, "each request is answered, and nothing else");
}

}  // namespace
}  // namespace tavrel::watchdog

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tavrel::watchdog::check({data, size});
    return 0;
}
