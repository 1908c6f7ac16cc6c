#include "watchdog/protocol/Message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace tavrel::watchdog {
namespace {

using Kind = Message::Kind;

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
    };
}

TEST(MessageTest, everyMessageComesBackFromItsBytesAsItWas) {
    for (const Message& message : messagesOfEachKind()) {
        const auto decoded = decode(encode(message));
        ASSERT_TRUE(std::holds_alternative<Message>(decoded));
        EXPECT_EQ(std::get<Message>(decoded), message);
    }
}

TEST(MessageTest, theBytesAreTheSameOnEveryMachine) {
    const MessageBytes expected{'T', 'V', 'G', 'D', 1, 3, 20, 0, 1, 2,
                                0,   0,   4,   3,   2, 1, 0,  0, 0, 0};
    EXPECT_EQ(encode({.kind = Kind::switchOff, .id = 0x0201, .display = 0x01020304}), expected);
}

TEST(MessageTest, whatIsShorterOrLongerIsNoMessage) {
    const MessageBytes whole = encode({.kind = Kind::goodbye});
    std::vector<std::uint8_t> bytes(whole.begin(), whole.end());
    bytes.push_back(0);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        const auto decoded = decode(std::span(bytes).first(size));
        if (size == messageSize) {
            EXPECT_TRUE(std::holds_alternative<Message>(decoded));
        } else {
            ASSERT_TRUE(std::holds_alternative<MessageError>(decoded)) << size;
            EXPECT_EQ(std::get<MessageError>(decoded), MessageError::wrongLength);
        }
    }
}

struct Damage {
    std::size_t at;
    std::uint8_t value;
    MessageError error;
};

class DamagedMessageTest : public testing::TestWithParam<Damage> {};

TEST_P(DamagedMessageTest, isAnErrorThatSaysWhatIsWrong) {
    MessageBytes bytes = encode({.kind = Kind::switchOff, .id = 1, .display = 2});
    bytes.at(GetParam().at) = GetParam().value;
    const auto decoded = decode(bytes);
    ASSERT_TRUE(std::holds_alternative<MessageError>(decoded));
    EXPECT_EQ(std::get<MessageError>(decoded), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(EachField, DamagedMessageTest,
                         testing::Values(Damage{0, 't', MessageError::foreign},
                                         Damage{3, 0, MessageError::foreign},
                                         Damage{4, 0, MessageError::otherVersion},
                                         Damage{4, 2, MessageError::otherVersion},
                                         Damage{5, 0, MessageError::unknownKind},
                                         Damage{5, 7, MessageError::unknownKind},
                                         Damage{5, 255, MessageError::unknownKind},
                                         Damage{6, 19, MessageError::wrongLength},
                                         Damage{7, 1, MessageError::wrongLength},
                                         // A request without a number, and one with a status.
                                         Damage{8, 0, MessageError::impossibleField},
                                         Damage{16, 1, MessageError::impossibleField},
                                         // A goodbye with a number and a display.
                                         Damage{5, 6, MessageError::impossibleField},
                                         // An answer about a display.
                                         Damage{5, 5, MessageError::impossibleField}));

TEST(MessageTest, noTwoSequencesOfBytesMeanTheSame) {
    std::size_t accepted = 0;
    std::size_t refused = 0;
    for (const Message& message : messagesOfEachKind()) {
        const MessageBytes original = encode(message);
        for (std::size_t at = 0; at < messageSize; ++at) {
            for (unsigned value = 0; value < 256; ++value) {
                MessageBytes bytes = original;
                bytes.at(at) = static_cast<std::uint8_t>(value);
                const auto decoded = decode(bytes);
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

/// All that the reader makes of `bytes` when they arrive `step` at a time.
std::vector<std::variant<Message, MessageError>> readInSteps(const std::vector<std::uint8_t>& bytes,
                                                             std::size_t step) {
    MessageReader reader;
    std::vector<std::variant<Message, MessageError>> results;
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

std::vector<std::uint8_t> streamOf(const std::vector<Message>& messages) {
    std::vector<std::uint8_t> bytes;
    for (const Message& message : messages) {
        const MessageBytes encoded = encode(message);
        bytes.insert(bytes.end(), encoded.begin(), encoded.end());
    }
    return bytes;
}

TEST(MessageReaderTest, messagesComeOutWholeHoweverTheirBytesArrive) {
    const std::vector<Message> messages{{.kind = Kind::alreadyOff, .display = 1},
                                        {.kind = Kind::switchOn, .id = 1, .display = 2},
                                        {.kind = Kind::goodbye}};
    for (std::size_t step = 1; step <= messageSize; ++step) {
        const auto results = readInSteps(streamOf(messages), step);
        ASSERT_EQ(results.size(), messages.size()) << "step " << step;
        for (std::size_t i = 0; i < messages.size(); ++i) {
            ASSERT_TRUE(std::holds_alternative<Message>(results[i]));
            EXPECT_EQ(std::get<Message>(results[i]), messages[i]);
        }
    }
}

TEST(MessageReaderTest, halfAMessageIsNothingYet) {
    std::vector<std::uint8_t> bytes = streamOf({{.kind = Kind::goodbye}});
    bytes.pop_back();
    EXPECT_TRUE(readInSteps(bytes, messageSize).empty());
}

TEST(MessageReaderTest, nothingIsUnderstoodAfterAnError) {
    std::vector<std::uint8_t> bytes = streamOf({{.kind = Kind::goodbye}, {.kind = Kind::goodbye}});
    bytes[0] = 0;
    const auto results = readInSteps(bytes, messageSize);
    ASSERT_EQ(results.size(), 2U);
    for (const auto& result : results) {
        ASSERT_TRUE(std::holds_alternative<MessageError>(result));
        EXPECT_EQ(std::get<MessageError>(result), MessageError::foreign);
    }
}

}  // namespace
}  // namespace tavrel::watchdog
