#include "platform/layout/LastWord.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>

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
    std::atomic<bool> isGone = false;

private:
    std::optional<Server::Answer> look() {
        const int looks = ++looks_;
        if (isGone) {
            return Server::Answer{};
        }
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

TEST_F(LastWordInStepTest, IsEnoughForOneWhoAsksHowItWasLately) {
    auto server = make({.freshness = 1h});

    EXPECT_EQ(*server.askLately().word, 1);
    EXPECT_EQ(*server.askLately().word, 1);
    EXPECT_EQ(*server.ask(false).word, 2);
    EXPECT_EQ(*server.askLately().word, 2);
}

TEST_F(LastWordInStepTest, IsAskedForAnewWhenItIsTooOldToBeHowItWasLately) {
    auto server = make({.freshness = 0ms});

    EXPECT_EQ(*server.askLately().word, 1);
    EXPECT_EQ(*server.askLately().word, 2);
}

TEST_F(LastWordInStepTest, IsAskedForAnewWhileTheServerIsSilentAlsoLately) {
    auto server = make({.freshness = 1h});
    server.askLately();
    isSilent = true;
    EXPECT_FALSE(server.ask(false).isFresh);

    isSilent = false;

    EXPECT_TRUE(server.askLately().isFresh);
    EXPECT_EQ(looks(), 3);
}

TEST_F(LastWordInStepTest, IsAskedForAnewWhenTheServerWasGoneLately) {
    auto server = make({.freshness = 1h});
    isGone = true;
    EXPECT_EQ(server.askLately().word, nullptr);

    isGone = false;

    EXPECT_NE(server.askLately().word, nullptr);
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

/// Somebody who asks each ten milliseconds, by a clock that only the test moves. The server is
/// asked one before that, and what it said may be less than three old.
class LastWordRhythmTest : public testing::Test {
protected:
    int askAt(std::chrono::milliseconds time) {
        now_ = time;
        return *words_.askInStep().word;
    }

    /// How often the server has been asked when the thread that asks it knows what time it is.
    int looksAt(std::chrono::milliseconds time) {
        now_ = time;
        // It looks at the clock when it wakes, when it begins to ask, and before it sleeps again.
        awaitReadings(3);
        return looks_;
    }

    /// It looks at the clock once more, and sleeps until somebody asks.
    void fallAsleepAt(std::chrono::milliseconds time) {
        now_ = time;
        awaitReadings(1);
    }

    int askNow() { return *words_.ask(false).word; }

private:
    using Server = LastWord<int>;

    void awaitReadings(int number) {
        const int before = readings_;
        EXPECT_TRUE(support::waitUntil([&] { return readings_ >= before + number; }));
    }

    Server::Answer look(bool isToProbe) {
        EXPECT_FALSE(isToProbe) << "which takes its time";
        return {.word = std::make_shared<const int>(++looks_)};
    }

    std::atomic<std::chrono::nanoseconds> now_ = 0ns;
    std::atomic<int> readings_ = 0;
    std::atomic<int> looks_ = 0;
    Server words_{[this] { return [this](bool isToProbe) { return look(isToProbe); }; },
                  1h,
                  {.interval = 10ms, .headStart = 1ms, .freshness = 3ms},
                  [this] {
                      ++readings_;
                      return now_.load();
                  }};
};

TEST_F(LastWordRhythmTest, TheServerIsAskedAMomentBeforeTheNextQuestion) {
    EXPECT_EQ(askAt(0ms), 1);
    EXPECT_EQ(looksAt(8ms), 1);
    EXPECT_EQ(looksAt(9ms), 2);
    EXPECT_EQ(askAt(10ms), 2);
    EXPECT_EQ(looksAt(18ms), 2);
    EXPECT_EQ(looksAt(19ms), 3);
}

TEST_F(LastWordRhythmTest, WhoAsksTooEarlySetsTheRhythmAnew) {
    askAt(0ms);

    EXPECT_EQ(askAt(5ms), 2);
    EXPECT_EQ(looksAt(9ms), 2);
    EXPECT_EQ(looksAt(14ms), 3);
    EXPECT_EQ(askAt(15ms), 3);
}

TEST_F(LastWordRhythmTest, WhoIsLateOnceIsInTimeAgain) {
    askAt(0ms);
    looksAt(9ms);

    EXPECT_EQ(askAt(13ms), 3);
    EXPECT_EQ(looksAt(19ms), 4);
    EXPECT_EQ(askAt(20ms), 4);
}

TEST_F(LastWordRhythmTest, WhoIsLateTwiceSetsTheRhythmAnew) {
    askAt(0ms);
    looksAt(9ms);
    askAt(13ms);
    looksAt(19ms);

    EXPECT_EQ(askAt(23ms), 5);
    EXPECT_EQ(looksAt(29ms), 5);
    EXPECT_EQ(looksAt(32ms), 6);
    EXPECT_EQ(askAt(33ms), 6);
}

TEST_F(LastWordRhythmTest, WhoWasInTimeInBetweenIsLateForTheFirstTime) {
    askAt(0ms);
    looksAt(9ms);
    askAt(13ms);
    looksAt(19ms);
    askAt(20ms);
    looksAt(29ms);

    EXPECT_EQ(askAt(33ms), 6);
    EXPECT_EQ(looksAt(39ms), 7);
}

TEST_F(LastWordRhythmTest, TheServerIsLeftAloneWhenNobodyAsksAnyMore) {
    askAt(0ms);
    EXPECT_EQ(looksAt(9ms), 2);

    fallAsleepAt(19ms);

    EXPECT_EQ(askNow(), 3);
    EXPECT_EQ(askAt(20ms), 3) << "fresh enough";
    EXPECT_EQ(askNow(), 4);
    EXPECT_EQ(askNow(), 5) << "nobody else has asked";
}

}  // namespace
}  // namespace tavrel::layout
