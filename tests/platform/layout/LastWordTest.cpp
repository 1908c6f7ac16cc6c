#include "platform/layout/LastWord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "tests/support/WaitUntil.h"

namespace tavrel::layout {
namespace {

using namespace std::chrono_literals;
using support::waitUntil;
using testing::ElementsAre;

using Words = LastWord<int>;

/// Says what it is told to say, and keeps whoever asks waiting while it is told to.
class Server {
public:
    std::optional<Words::Answer> ask(bool isToProbe) {
        std::unique_lock lock(mutex_);
        probing_.push_back(isToProbe);
        changed_.wait(lock, [&] { return !isHolding_; });
        return says_;
    }

    void say(int word) { become({{.word = std::make_shared<const int>(word)}}); }
    void fallSilent() { become(std::nullopt); }
    void go() { become(Words::Answer{}); }
    void hold() { setHolding(true); }
    void letGo() { setHolding(false); }

    /// Of each look, whether monitors were to be looked for.
    std::vector<bool> probing() {
        const std::lock_guard lock(mutex_);
        return probing_;
    }
    bool hasBegunLook(std::size_t number) { return probing().size() >= number; }

private:
    void become(std::optional<Words::Answer> says) {
        const std::lock_guard lock(mutex_);
        says_ = std::move(says);
    }
    void setHolding(bool isHolding) {
        const std::lock_guard lock(mutex_);
        isHolding_ = isHolding;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<Words::Answer> says_;
    std::vector<bool> probing_;
    bool isHolding_ = false;
};

/// A clock that stands still, but for what tests do.
struct Time {
    std::chrono::nanoseconds read() {
        ++readings;
        return now.load();
    }
    std::atomic<std::chrono::nanoseconds> now = std::chrono::nanoseconds(1h);
    std::atomic<int> readings = 0;
};

class LastWordTest : public testing::Test {
protected:
    ~LastWordTest() override {
        server->letGo();
        words.reset();
    }

    void useTimeout(std::chrono::milliseconds timeout) {
        words.emplace([this] { return makeAsk(); }, timeout, Step{},
                      [time = time] { return time->read(); });
    }

    /// By a clock that is a minute further each time somebody looks.
    void useHastyClock() {
        words.emplace(
            [server = server] {
                return [server](bool isToProbe) { return server->ask(isToProbe); };
            },
            10s, Step{},
            [time = time] {
                time->now = time->now.load() + 1min;
                return time->read();
            });
    }

    int ask(bool isToProbe = false) {
        const Words::Answer answer = words->ask(isToProbe);
        isFresh = answer.isFresh;
        return answer.word == nullptr ? 0 : *answer.word;
    }

    /// Somebody else asks, and has waited for at least a moment.
    std::future<Words::Answer> askAndWait(bool isToProbe = false) {
        const int before = time->readings;
        auto answer =
            std::async(std::launch::async, [this, isToProbe] { return words->ask(isToProbe); });
        EXPECT_TRUE(waitUntil([&] { return time->readings > before; }));
        return answer;
    }

    /// The server has taken this long over a look, and still says nothing.
    std::future<Words::Answer> fallSilentFor(std::chrono::milliseconds silence) {
        server->hold();
        const std::size_t looks = server->probing().size();
        auto answer = std::async(std::launch::async, [this] { return words->ask(true); });
        EXPECT_TRUE(waitUntil([&] { return server->hasBegunLook(looks + 1); }));
        time->now = time->now.load() + silence;
        return answer;
    }

    static bool isReady(const std::future<Words::Answer>& answer) {
        return waitUntil([&] { return answer.wait_for(0s) == std::future_status::ready; });
    }

    const std::shared_ptr<Server> server = std::make_shared<Server>();
    const std::shared_ptr<Time> time = std::make_shared<Time>();
    std::atomic<int> made = 0;
    std::function<void()> atEndOfAsk = [] {};
    bool isFresh = false;
    std::optional<Words> words;

private:
    Words::Ask makeAsk() {
        ++made;
        const std::shared_ptr<int> own(new int, [this](const int* each) {
            atEndOfAsk();
            delete each;
        });
        return [server = server, own](bool isToProbe) { return server->ask(isToProbe); };
    }
};

TEST_F(LastWordTest, NobodyIsAskedBeforeTheFirstQuestion) {
    useTimeout(10s);

    words.reset();

    EXPECT_EQ(made, 0);
}

TEST_F(LastWordTest, EachQuestionIsPutAnew) {
    useTimeout(10s);
    server->say(1);

    EXPECT_EQ(ask(), 1);
    EXPECT_TRUE(isFresh);

    server->say(2);

    EXPECT_EQ(ask(), 2);
    EXPECT_TRUE(isFresh);
    EXPECT_EQ(made, 1);
}

TEST_F(LastWordTest, MonitorsAreLookedForOnlyWhenThatIsWanted) {
    useTimeout(10s);
    server->say(1);

    ask(false);
    ask(true);
    ask(false);

    EXPECT_THAT(server->probing(), ElementsAre(false, true, false));
}

TEST_F(LastWordTest, ASilentServerIsAnsweredForByWhatItSaidLast) {
    useTimeout(10s);
    server->say(1);
    ask();

    server->fallSilent();

    EXPECT_EQ(ask(), 1);
    EXPECT_FALSE(isFresh);

    server->say(2);

    EXPECT_EQ(ask(), 2);
    EXPECT_TRUE(isFresh);
}

TEST_F(LastWordTest, AServerThatHasGoneSaysNothingAndThatIsFresh) {
    useTimeout(10s);
    server->say(1);
    ask();

    server->go();

    EXPECT_EQ(ask(), 0);
    EXPECT_TRUE(isFresh);
}

TEST_F(LastWordTest, AServerThatIsBusySinceAMomentIsWaitedFor) {
    useTimeout(10s);
    server->say(1);
    ask();
    auto first = fallSilentFor(3s - 1ms);

    auto second = askAndWait();
    server->say(2);
    server->letGo();

    EXPECT_TRUE(second.get().isFresh);
    EXPECT_TRUE(first.get().isFresh);
}

TEST_F(LastWordTest, AServerThatNobodyHasAskedForLongIsNotSilent) {
    useTimeout(10s);
    server->say(1);
    ask();
    time->now = time->now.load() + 1h;

    server->say(2);

    EXPECT_EQ(ask(), 2);
    EXPECT_TRUE(isFresh);
}

TEST_F(LastWordTest, NobodyWaitsForAServerThatHasBeenSilentForThreeSeconds) {
    useTimeout(10s);
    server->say(1);
    ask();
    auto first = fallSilentFor(3s);

    auto second = askAndWait();

    EXPECT_TRUE(isReady(second));
    server->letGo();
    const Words::Answer answer = second.get();
    EXPECT_EQ(*answer.word, 1);
    EXPECT_FALSE(answer.isFresh);
}

TEST_F(LastWordTest, NobodyWaitsForLongerThanTheTimeout) {
    useTimeout(1s);
    server->say(1);
    ask();
    auto first = fallSilentFor(1s);

    auto second = askAndWait();

    EXPECT_TRUE(isReady(second));
    server->letGo();
}

TEST_F(LastWordTest, WhoeverHasMonitorsLookedForWaitsEvenForAServerThatIsSilent) {
    useTimeout(10s);
    server->say(1);
    ask();
    auto first = fallSilentFor(Words::questionTimeout);

    auto second = askAndWait(true);
    server->say(2);
    server->letGo();

    const Words::Answer answer = second.get();
    EXPECT_EQ(*answer.word, 2);
    EXPECT_TRUE(answer.isFresh);
}

TEST_F(LastWordTest, WhoeverAsksWaitsNoLongerThanUntilTheClockSaysSo) {
    useHastyClock();
    server->hold();

    EXPECT_EQ(ask(), 0);
    EXPECT_FALSE(isFresh);
}

TEST_F(LastWordTest, ALookForMonitorsIsNotForgottenWhileAnotherLookTakesItsTime) {
    useTimeout(10s);
    server->say(1);
    server->hold();
    auto first = std::async(std::launch::async, [this] { return words->ask(false); });
    ASSERT_TRUE(waitUntil([&] { return server->hasBegunLook(1); }));

    auto second = askAndWait(true);
    auto third = askAndWait(false);
    server->letGo();
    third.wait();
    second.wait();

    EXPECT_THAT(server->probing(), ElementsAre(false, true));
}

#ifdef __GLIBC__
/// While it lives, no thread can be started: each would have a stack larger than the memory.
class NoMoreThreads {
public:
    NoMoreThreads() {
        ::pthread_getattr_default_np(&before_);
        pthread_attr_t attributes = before_;
        ::pthread_attr_setstacksize(&attributes, std::size_t{1} << 60U);
        ::pthread_setattr_default_np(&attributes);
    }
    ~NoMoreThreads() { ::pthread_setattr_default_np(&before_); }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t before_{};
};

TEST_F(LastWordTest, AServerThatNoThreadCanAskIsOutOfReachUntilOneCan) {
    useTimeout(10s);
    server->say(1);
    {
        const NoMoreThreads crowded;

        EXPECT_EQ(ask(), 0);
        EXPECT_TRUE(isFresh);
    }

    EXPECT_EQ(ask(), 1);
}
#endif

TEST_F(LastWordTest, TheEndDestroysWhatAsksFirst) {
    std::atomic<bool> hasEnded = false;
    std::atomic<bool> isLate = false;
    std::atomic<bool> isDestroyed = false;
    atEndOfAsk = [&] {
        isLate = waitUntil([&] { return hasEnded.load(); }, 50ms);
        isDestroyed = true;
    };
    useTimeout(10s);
    server->say(1);
    ask();
    EXPECT_FALSE(isDestroyed);

    words.reset();
    hasEnded = true;

    EXPECT_TRUE(waitUntil([&] { return isDestroyed.load(); }));
    EXPECT_FALSE(isLate);
}

TEST_F(LastWordTest, TheEndDoesNotWaitForASilentServer) {
    useHastyClock();
    server->hold();
    ask();

    auto ended = std::async(std::launch::async, [this] { words.reset(); });

    EXPECT_TRUE(waitUntil([&] { return ended.wait_for(0s) == std::future_status::ready; }));
    server->letGo();
}

}  // namespace
}  // namespace tavrel::layout
