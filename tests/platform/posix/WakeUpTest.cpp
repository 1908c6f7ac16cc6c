#include "platform/posix/WakeUp.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <thread>

#include "tests/platform/posix/IsReadable.h"

namespace tavrel {
namespace {

TEST(WakeUpTest, IsReadableFromAWakeUntilItIsDrained) {
    const WakeUp wakeUp;
    EXPECT_FALSE(isReadable(wakeUp.descriptor()));

    wakeUp.wake();
    EXPECT_TRUE(isReadable(wakeUp.descriptor()));

    wakeUp.drain();
    EXPECT_FALSE(isReadable(wakeUp.descriptor()));

    wakeUp.wake();
    EXPECT_TRUE(isReadable(wakeUp.descriptor())) << "a second time";
}

TEST(WakeUpTest, ADrainTakesManyWakesTogether) {
    const WakeUp wakeUp;
    for (int i = 0; i < 1000; ++i) {
        wakeUp.wake();
    }

    wakeUp.drain();

    EXPECT_FALSE(isReadable(wakeUp.descriptor()));
}

TEST(WakeUpTest, DrainingWhatWasNeverWokenDoesNotBlock) {
    const WakeUp wakeUp;

    wakeUp.drain();

    EXPECT_FALSE(isReadable(wakeUp.descriptor()));
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
