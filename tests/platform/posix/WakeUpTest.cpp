#include "platform/posix/WakeUp.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <thread>

namespace tavrel {
namespace {

bool isReadable(const WakeUp& wakeUp) {
    pollfd each{wakeUp.descriptor(), POLLIN, 0};
    return ::poll(&each, 1, 0) == 1 && each.revents == POLLIN;
}

TEST(WakeUpTest, IsReadableFromAWakeUntilItIsDrained) {
    const WakeUp wakeUp;
    EXPECT_FALSE(isReadable(wakeUp));

    wakeUp.wake();
    EXPECT_TRUE(isReadable(wakeUp));

    wakeUp.drain();
    EXPECT_FALSE(isReadable(wakeUp));

    wakeUp.wake();
    EXPECT_TRUE(isReadable(wakeUp)) << "a second time";
}

TEST(WakeUpTest, ADrainTakesManyWakesTogether) {
    const WakeUp wakeUp;
    for (int i = 0; i < 1000; ++i) {
        wakeUp.wake();
    }

    wakeUp.drain();

    EXPECT_FALSE(isReadable(wakeUp));
}

TEST(WakeUpTest, DrainingWhatWasNeverWokenDoesNotBlock) {
    const WakeUp wakeUp;

    wakeUp.drain();

    EXPECT_FALSE(isReadable(wakeUp));
}

TEST(WakeUpTest, EndsAnotherThreadsWait) {
    const WakeUp wakeUp;
    std::thread sleeper([&] {
        pollfd each{wakeUp.descriptor(), POLLIN, 0};
        EXPECT_EQ(::poll(&each, 1, 30'000), 1);
    });

    wakeUp.wake();

    sleeper.join();
}

}  // namespace
}  // namespace tavrel
