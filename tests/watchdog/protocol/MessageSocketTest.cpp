#include "watchdog/protocol/MessageSocket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <optional>
#include <thread>
#include <vector>

#include "tests/support/WaitUntil.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;
using Kind = Message::Kind;

/// Far more than anything here takes.
constexpr std::chrono::milliseconds longest = 30s;

class MessageSocketTest : public testing::Test {
protected:
    MessageSocketTest() : MessageSocketTest(makeSocketPair()) {}

    /// Bytes that no message socket would send.
    void sendRaw(std::span<const std::uint8_t> bytes) const {
        ASSERT_EQ(::send(theirs->descriptor(), bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
    }

    static bool isReadable(const MessageSocket& socket) {
        pollfd waiting{.fd = socket.descriptor(), .events = POLLIN, .revents = 0};
        return poll(&waiting, 1, 0) > 0;
    }

    MessageSocket ours;
    std::optional<MessageSocket> theirs;

private:
    using Ends = std::optional<std::pair<FileDescriptor, FileDescriptor>>;
    explicit MessageSocketTest(Ends ends)
        : ours(std::move(ends.value().first)), theirs(std::move(ends.value().second)) {}
};

TEST_F(MessageSocketTest, WhatIsSentArrivesInOrder) {
    const Message first{.kind = Kind::switchOff, .id = 1, .display = 2};
    const Message second{.kind = Kind::goodbye};

    EXPECT_TRUE(theirs->send(first));
    EXPECT_TRUE(theirs->send(second));

    EXPECT_EQ(ours.receive(longest), Received(first));
    EXPECT_EQ(ours.receive(longest), Received(second));
}

TEST_F(MessageSocketTest, WhatWasSentBeforeTheEndStillArrives) {
    theirs->send({.kind = Kind::goodbye});
    theirs.reset();

    EXPECT_EQ(ours.receive(longest), Received(Message{.kind = Kind::goodbye}));
    EXPECT_EQ(ours.receive(longest), Received(NoMessage::gone));
    EXPECT_EQ(ours.receive(longest), Received(NoMessage::gone));
}

TEST_F(MessageSocketTest, APeerThatEndsWithoutReadingEverythingIsGone) {
    ours.send({.kind = Kind::ready});
    theirs.reset();

    EXPECT_EQ(ours.receive(longest), Received(NoMessage::gone));
}

TEST_F(MessageSocketTest, SendingToAPeerThatIsGoneFailsWithoutASignal) {
    theirs.reset();

    EXPECT_FALSE(ours.send({.kind = Kind::ready}));
}

TEST_F(MessageSocketTest, SendingToAPeerThatDoesNotReadFailsInsteadOfWaiting) {
    bool isSent = true;
    for (int sent = 0; isSent && sent < 1'000'000; ++sent) {
        isSent = ours.send({.kind = Kind::heartbeat});
    }

    EXPECT_FALSE(isSent);
    EXPECT_EQ(theirs->receive(0ms), Received(Message{.kind = Kind::heartbeat}));
}

TEST_F(MessageSocketTest, APeerThatEndsInTheMiddleOfAMessageIsGone) {
    const MessageBytes bytes = encode({.kind = Kind::goodbye});
    sendRaw(std::span(bytes).first(7));
    theirs.reset();

    EXPECT_EQ(ours.receive(longest), Received(NoMessage::gone));
}

TEST_F(MessageSocketTest, AfterWhatIsNotAMessageEverythingIsMalformed) {
    MessageBytes bytes = encode({.kind = Kind::goodbye});
    bytes[4] = 9;
    sendRaw(bytes);
    theirs->send({.kind = Kind::goodbye});

    EXPECT_EQ(ours.receive(longest), Received(NoMessage::malformed));
    EXPECT_EQ(ours.receive(longest), Received(NoMessage::malformed));
}

TEST_F(MessageSocketTest, ReceivingEndsAtItsTimeout) {
    EXPECT_EQ(ours.receive(0ms), Received(NoMessage::timedOut));
    EXPECT_EQ(ours.receive(20ms), Received(NoMessage::timedOut));
}

TEST_F(MessageSocketTest, PartOfAMessageIsKeptUntilTheRestArrives) {
    const MessageBytes bytes = encode({.kind = Kind::goodbye});
    for (std::size_t part = 1; part < messageSize; ++part) {
        sendRaw(std::span(bytes).first(part));
        EXPECT_EQ(ours.receive(0ms), Received(NoMessage::timedOut)) << part;

        sendRaw(std::span(bytes).subspan(part));

        EXPECT_EQ(ours.receive(0ms), Received(Message{.kind = Kind::goodbye})) << part;
    }
}

TEST_F(MessageSocketTest, AnInterruptionLongAgoIsNotTakenForOneNow) {
    const Message message{.kind = Kind::goodbye};
    theirs->send(message);
    theirs.reset();

    // No call that succeeds takes it back.
    errno = EINTR;
    EXPECT_EQ(ours.receive(longest), Received(message));
    errno = EINTR;
    EXPECT_EQ(ours.receive(longest), Received(NoMessage::gone));
    errno = EINTR;
    ours.hangUp();
}

TEST_F(MessageSocketTest, OfSeveralMessagesAllAreSent) {
    const std::vector<Message> messages{{.kind = Kind::alreadyOff, .display = 1},
                                        {.kind = Kind::alreadyOff, .display = 2}};

    EXPECT_TRUE(sendAll(ours, {}));
    EXPECT_TRUE(sendAll(ours, messages));

    EXPECT_EQ(theirs->receive(0ms), Received(messages.front()));
    EXPECT_EQ(theirs->receive(0ms), Received(messages.back()));
    theirs.reset();
    EXPECT_FALSE(sendAll(ours, messages));
}

TEST_F(MessageSocketTest, HangingUpShowsAtOnceAndLastsUntilTheOtherSideHasGone) {
    // More than fits into the connection, so that it has to be read for the sender to go on.
    const std::vector<std::uint8_t> noise(1'000'000, 0x55);
    sendRaw(std::span(noise).first(1));
    std::optional<Received> seen;
    std::thread other([&] {
        seen = theirs->receive(longest);
        EXPECT_TRUE(support::waitUntil([&] { return !isReadable(ours); }));
        sendRaw(noise);
        theirs.reset();
    });

    ours.hangUp();

    other.join();
    EXPECT_EQ(seen, Received(NoMessage::gone));
    EXPECT_FALSE(theirs.has_value());
}

TEST_F(MessageSocketTest, HangingUpOutlastsInterruptions) {
    static std::atomic<int> interruptions = 0;
    struct sigaction former {};
    struct sigaction counting {};
    counting.sa_handler = [](int /*signal*/) { ++interruptions; };
    sigaction(SIGUSR1, &counting, &former);
    std::atomic<bool> isOver = false;
    std::thread hangingUp([&] {
        ours.hangUp();
        isOver = true;
    });

    EXPECT_TRUE(support::waitUntil([&] {
        pthread_kill(hangingUp.native_handle(), SIGUSR1);
        return interruptions >= 10 || isOver;
    }));

    EXPECT_FALSE(isOver);
    theirs.reset();
    hangingUp.join();
    sigaction(SIGUSR1, &former, nullptr);
}

TEST_F(MessageSocketTest, StartedProgramsInheritNeitherEnd) {
    for (const int descriptor : {ours.descriptor(), theirs->descriptor()}) {
        EXPECT_EQ(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
}

}  // namespace
}  // namespace tavrel::watchdog
