#include "platform/layout/LastWord.h"

#include <gtest/gtest.h>

#include <atomic>

#include "tests/support/WaitUntil.h"

namespace tavrel::layout {
namespace {

using namespace std::chrono_literals;

/// A server whose word is how often it has been asked.
class LastWordInStepTest : public testing::Test {
protected:
    using Server = LastWord<int>;

    Server make(const Step& step) {
        return {[this] { return [this](bool /*isToProbe*/) { return look(); }; }, 1h, step};
    }

    int looks() const { return looks_; }

    std::atomic<bool> isSilent = false;

private:
    std::optional<Server::Answer> look() {
        const int looks = ++looks_;
        return isSilent ? std::nullopt
                        : std::optional(Server::Answer{.word = std::make_shared<const int>(looks)});
    }

    std::atomic<int> looks_ = 0;
};

TEST_F(LastWordInStepTest, IsAskedForEachTimeByWhoWantsToKnowHowItIsNow) {
    auto server = make({.freshness = 1h});

    EXPECT_EQ(*server.ask(false).word, 1);
    EXPECT_EQ(*server.ask(false).word, 2);
}

TEST_F(LastWordInStepTest, IsFreshEnoughForOneWhoAsksInStep) {
    auto server = make({.interval = 24h, .freshness = 1h});

    EXPECT_EQ(*server.askInStep().word, 1);
    EXPECT_EQ(*server.askInStep().word, 1);
    EXPECT_EQ(*server.ask(false).word, 2);
    EXPECT_EQ(*server.askInStep().word, 2);
}

TEST_F(LastWordInStepTest, IsAskedForAnewWhenItIsTooOldForOneWhoAsksInStep) {
    auto server = make({.interval = 24h, .freshness = 0ms});

    EXPECT_EQ(*server.askInStep().word, 1);
    EXPECT_EQ(*server.askInStep().word, 2);
}

TEST_F(LastWordInStepTest, IsAskedForAnewInStepWhileTheServerIsSilent) {
    auto server = make({.interval = 24h, .freshness = 1h});
    server.askInStep();
    isSilent = true;
    EXPECT_FALSE(server.ask(false).isFresh);

    EXPECT_FALSE(server.askInStep().isFresh);
    isSilent = false;

    EXPECT_TRUE(server.askInStep().isFresh);
    EXPECT_EQ(looks(), 4);
}

TEST_F(LastWordInStepTest, IsThereBeforeTheNextQuestionInStep) {
    auto server = make({.interval = 1ms, .headStart = 0ms, .freshness = 1h});

    server.askInStep();

    EXPECT_TRUE(support::waitUntil([&] { return *server.askInStep().word > 1; }));
}

TEST_F(LastWordInStepTest, IsNotAskedForInStepAnyMoreWhenNobodyDoes) {
    auto server = make({.interval = 1ms, .headStart = 0ms, .freshness = 1h});

    server.askInStep();
    EXPECT_TRUE(support::waitUntil([this] { return looks() == 2; }));

    // Each of these takes longer than a step.
    for (int look = 3; look < 100; ++look) {
        std::this_thread::yield();
        EXPECT_EQ(*server.ask(false).word, look);
    }
}

}  // namespace
}  // namespace tavrel::layout
