#include "watchdog/protocol/MessageReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace tavrel::watchdog {
namespace {

using Kind = Message::Kind;

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
