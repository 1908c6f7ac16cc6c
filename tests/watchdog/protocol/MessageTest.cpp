#include "watchdog/protocol/Message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <ostream>
#include <vector>

namespace tavrel::watchdog {
namespace {

using Kind = Message::Kind;

std::vector<std::uint8_t> streamOf(const std::vector<Message>& messages) {
    std::vector<std::uint8_t> bytes;
    for (const Message& message : messages) {
        const MessageBytes encoded = encode(message);
        bytes.insert(bytes.end(), encoded.begin(), encoded.end());
    }
    return bytes;
}

std::vector<Message> messagesOfEachKind() {
    constexpr auto most = std::numeric_limits<std::uint32_t>::max();
    return {
        {.kind = Kind::ready},
        {.kind = Kind::alreadyOff, .display = 5},
        {.kind = Kind::switchOff, .id = 1, .display = most},
        {.kind = Kind::switchOn, .id = most, .display = 0},
        {.kind = Kind::answer, .id = 0x01020304, .status = 1004},
        {.kind = Kind::answer, .id = 7, .status = std::numeric_limits<ServerStatus>::min()},
        {.kind = Kind::goodbye},
        {.kind = Kind::heartbeat},
        {.kind = Kind::handOver, .display = 9},
    };
}

int numberOf(Kind kind) {
    return static_cast<int>(kind);
}

bool isImpossible(const Message& message) {
    return decode(encode(message)) == Decoded(MessageError::impossibleField);
}

TEST(MessageTest, EveryMessageIsDecodedAsItWasEncoded) {
    for (const Message& message : messagesOfEachKind()) {
        EXPECT_EQ(decode(encode(message)), Decoded(message));
    }
}

TEST(MessageTest, TheBytesAreTheSameOnEveryMachine) {
    const MessageBytes expected{'T', 'V', 'G', 'D', 1, 3, 20, 0, 1, 2,
                                0,   0,   4,   3,   2, 1, 0,  0, 0, 0};

    EXPECT_EQ(encode({.kind = Kind::switchOff, .id = 0x0201, .display = 0x01020304}), expected);
}

TEST(MessageTest, WhatIsShorterOrLongerIsNotAMessage) {
    const Message message{.kind = Kind::goodbye};
    std::vector<std::uint8_t> bytes = streamOf({message});
    bytes.push_back(0xFF);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        const Decoded expected =
            size == messageSize ? Decoded(message) : Decoded(MessageError::wrongLength);

        EXPECT_EQ(decode(std::span(bytes).first(size)), expected) << size;
    }
}

struct Damage {
    std::size_t at;
    std::uint8_t value;
    MessageError error;
};

void PrintTo(const Damage& damage, std::ostream* out) {
    *out << "byte " << damage.at << " is " << int{damage.value};
}

class DamagedMessageTest : public testing::TestWithParam<Damage> {};

TEST_P(DamagedMessageTest, IsAnErrorThatSaysWhatIsWrong) {
    MessageBytes bytes = encode({.kind = Kind::switchOff, .id = 1, .display = 2});
    bytes.at(GetParam().at) = GetParam().value;

    EXPECT_EQ(decode(bytes), Decoded(GetParam().error));
}

INSTANTIATE_TEST_SUITE_P(EachField, DamagedMessageTest,
                         testing::Values(Damage{0, 't', MessageError::foreign},
                                         Damage{3, 0, MessageError::foreign},
                                         Damage{4, 0, MessageError::otherVersion},
                                         Damage{4, 2, MessageError::otherVersion},
                                         Damage{5, 0, MessageError::unknownKind},
                                         Damage{5, 9, MessageError::unknownKind},
                                         Damage{5, 255, MessageError::unknownKind},
                                         Damage{6, 19, MessageError::wrongLength},
                                         Damage{7, 1, MessageError::wrongLength},
                                         // A request without a number, and one with a status.
                                         Damage{8, 0, MessageError::impossibleField},
                                         Damage{16, 1, MessageError::impossibleField},
                                         // A goodbye with a number and a display.
                                         Damage{5, 6, MessageError::impossibleField},
                                         // A heartbeat with a number and a display.
                                         Damage{5, 7, MessageError::impossibleField},
                                         // A hand-over with a number.
                                         Damage{5, 8, MessageError::impossibleField},
                                         // An answer about a display.
                                         Damage{5, 5, MessageError::impossibleField}));

TEST(MessageTest, AnyFieldThatDoesNotGoWithItsKindIsImpossible) {
    for (const Kind kind : {Kind::ready, Kind::goodbye, Kind::heartbeat}) {
        EXPECT_TRUE(isImpossible({.kind = kind, .id = 1})) << numberOf(kind);
        EXPECT_TRUE(isImpossible({.kind = kind, .display = 1})) << numberOf(kind);
        EXPECT_TRUE(isImpossible({.kind = kind, .status = 1})) << numberOf(kind);
    }
    for (const Kind kind : {Kind::alreadyOff, Kind::handOver}) {
        EXPECT_TRUE(isImpossible({.kind = kind, .id = 1, .display = 5})) << numberOf(kind);
        EXPECT_TRUE(isImpossible({.kind = kind, .display = 5, .status = 1})) << numberOf(kind);
    }
    for (const Kind kind : {Kind::switchOff, Kind::switchOn}) {
        EXPECT_TRUE(isImpossible({.kind = kind, .id = 0, .display = 5})) << numberOf(kind);
        EXPECT_TRUE(isImpossible({.kind = kind, .id = 1, .display = 5, .status = 1}))
            << numberOf(kind);
    }
    EXPECT_TRUE(isImpossible({.kind = Kind::answer, .id = 0}));
    EXPECT_TRUE(isImpossible({.kind = Kind::answer, .id = 1, .display = 5}));
}

TEST(MessageTest, NoTwoSequencesOfBytesMeanTheSame) {
    std::size_t accepted = 0;
    std::size_t refused = 0;
    for (const Message& message : messagesOfEachKind()) {
        const MessageBytes original = encode(message);
        for (std::size_t at = 0; at < messageSize; ++at) {
            for (unsigned value = 0; value < 256; ++value) {
                MessageBytes bytes = original;
                bytes.at(at) = static_cast<std::uint8_t>(value);
                const Decoded decoded = decode(bytes);
                if (const auto* read = std::get_if<Message>(&decoded)) {
                    ++accepted;
                    ASSERT_EQ(encode(*read), bytes);
                } else {
                    ++refused;
                }
            }
        }
    }
    EXPECT_GT(accepted, 1000U);
    EXPECT_GT(refused, 1000U);
}

/// What the reader returns for `bytes` when they arrive `step` at a time.
std::vector<Decoded> readInSteps(const std::vector<std::uint8_t>& bytes, std::size_t step) {
    MessageReader reader;
    std::vector<Decoded> results;
    std::span<const std::uint8_t> rest = bytes;
    while (!rest.empty()) {
        const std::size_t size = std::min({step, rest.size(), reader.missing()});
        if (const auto result = reader.add(rest.first(size))) {
            results.push_back(*result);
        }
        rest = rest.subspan(size);
    }
    return results;
}

TEST(MessageReaderTest, MessagesAreCompleteHoweverTheirBytesArrive) {
    const std::vector<Message> messages = messagesOfEachKind();
    const std::vector<Decoded> expected(messages.begin(), messages.end());
    for (std::size_t step = 1; step <= messageSize; ++step) {
        EXPECT_EQ(readInSteps(streamOf(messages), step), expected) << "step " << step;
    }
}

TEST(MessageReaderTest, AnIncompleteMessageIsNotReturned) {
    std::vector<std::uint8_t> bytes = streamOf({{.kind = Kind::goodbye}});
    bytes.pop_back();

    EXPECT_TRUE(readInSteps(bytes, messageSize).empty());
}

TEST(MessageReaderTest, AnErrorIsFinal) {
    std::vector<std::uint8_t> bytes = streamOf({{.kind = Kind::goodbye}, {.kind = Kind::goodbye}});
    bytes[0] = 0;

    EXPECT_EQ(readInSteps(bytes, messageSize),
              (std::vector<Decoded>(2, Decoded(MessageError::foreign))));
}

}  // namespace
}  // namespace tavrel::watchdog
