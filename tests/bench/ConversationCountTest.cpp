#include <gtest/gtest.h>

#include <string>

#include "tests/bench/Traffic.h"

namespace tavrel::bench {
namespace {

std::string zeros(std::size_t count) {
    return std::string(count, '\0');
}

/// A request of four-byte words, its header included.
std::string request(char words) {
    return std::string{'\x2b', '\0', words, '\0'} + zeros(4 * std::size_t(words) - 4);
}

/// A message of the server's: a reply is of kind 1 and says by how many words it is longer.
std::string message(char kind, char moreWords = 0) {
    return std::string{kind, '\0', '\0', '\0', moreWords, '\0', '\0', '\0'} +
           zeros(24 + 4 * std::size_t(moreWords));
}

class ConversationCountTest : public testing::Test {
protected:
    static constexpr char reply = 1;
    static constexpr char event = 22;

    ConversationCountTest() {
        // The greetings: with a name of 3 and data of 5 bytes, each padded; and with 2 words.
        conversation.fromClient(std::string("l\0\0\0\0\0\3\0\5\0\0\0", 12) + zeros(4 + 8));
        conversation.fromServer(std::string("\1\0\0\0\0\0\2\0", 8) + zeros(8));
    }

    ConversationCount conversation;
};

TEST_F(ConversationCountTest, GreetingsAreNoRequestsAndNoRoundTrips) {
    EXPECT_EQ(conversation.count().requests, 0);
    EXPECT_EQ(conversation.count().roundTrips, 0);
    EXPECT_EQ(conversation.count().bytesToServer, 24);
    EXPECT_EQ(conversation.count().bytesFromServer, 16);
}

TEST_F(ConversationCountTest, SeveralRequestsAnsweredTogetherAreOneRoundTrip) {
    conversation.fromClient(request(2) + request(3) + request(1));
    conversation.fromServer(message(reply) + message(reply, 5) + message(reply));

    EXPECT_EQ(conversation.count().requests, 3);
    EXPECT_EQ(conversation.count().roundTrips, 1);
}

TEST_F(ConversationCountTest, ARequestTooLongForItsHeaderSaysItsLengthBehindIt) {
    constexpr char words = 9;
    const std::string header{'\x2b', '\0', '\0', '\0', words, '\0', '\0', '\0'};
    conversation.fromClient(header.substr(0, 6));
    conversation.fromClient(header.substr(6) + zeros(4 * words - 8) + request(1));

    EXPECT_EQ(conversation.count().requests, 2);
}

TEST_F(ConversationCountTest, AskingAgainAfterAnAnswerIsAnotherRoundTrip) {
    for (int i = 0; i < 2; ++i) {
        conversation.fromClient(request(1));
        conversation.fromServer(message(reply));
    }

    EXPECT_EQ(conversation.count().roundTrips, 2);
}

TEST_F(ConversationCountTest, AnEventIsNoAnswer) {
    conversation.fromClient(request(1));
    conversation.fromServer(message(event));

    EXPECT_EQ(conversation.count().requests, 1);
    EXPECT_EQ(conversation.count().roundTrips, 0);
}

TEST_F(ConversationCountTest, WhatALongAnswerHoldsIsNoAnswerOfItsOwn) {
    conversation.fromClient(request(1));
    conversation.fromServer(message(reply, 5).substr(0, 32) + std::string(20, reply));

    conversation.fromClient(request(1));
    conversation.fromServer(message(event));

    EXPECT_EQ(conversation.count().roundTrips, 1);
}

TEST_F(ConversationCountTest, CountsTheSameHoweverTheBytesArrive) {
    for (const char each : request(2) + request(4)) {
        conversation.fromClient({&each, 1});
    }
    for (const char each : message(event) + message(reply, 3)) {
        conversation.fromServer({&each, 1});
    }

    EXPECT_EQ(conversation.count().requests, 2);
    EXPECT_EQ(conversation.count().roundTrips, 1);
}

}  // namespace
}  // namespace tavrel::bench
