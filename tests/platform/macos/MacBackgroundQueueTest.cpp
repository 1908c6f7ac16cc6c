#include "platform/macos/MacBackgroundQueue.h"

#include <future>
#include <memory>

#include "tests/platform/macos/BackgroundQueueFixture.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/Dispatch.h"

namespace tavrel {
namespace {

using simulatedMac::takeCalls;
using testing::Each;

class MacBackgroundQueueTest : public MacFixture, protected BackgroundQueueFixture {
protected:
    ~MacBackgroundQueueTest() override {
        simulatedMac::resumeWork();
        simulatedMac::joinWork();
    }

    const std::shared_ptr<int> owned = std::make_shared<int>();
};

TEST_F(MacBackgroundQueueTest, RunsJobsOnTheQueueForWorkThatTheUserInitiated) {
    std::promise<void> hasRun;

    queue->async([&] { hasRun.set_value(); });

    hasRun.get_future().wait();
    EXPECT_THAT(takeCalls(), Each("dispatch_get_global_queue(25, 0)"));
}

TEST_F(MacBackgroundQueueTest, DropsAtItsEndJobsThatHaveNotStarted) {
    simulatedMac::holdWork();
    queue->async([owned = owned] { FAIL() << "the queue has gone"; });
    EXPECT_EQ(owned.use_count(), 2);

    queue.reset();
    EXPECT_EQ(owned.use_count(), 1);
    // The system makes its call all the same.
    EXPECT_EQ(simulatedMac::heldWork(), 1U);
}

TEST_F(MacBackgroundQueueTest, DropsJobsThatTheLastOnesAdd) {
    // By the time of the call either the queue is ending, or the new job runs like any other.
    startJob([&same = *queue, owned = owned] { same.async([owned] {}); });

    mayEnd.set_value();
    queue.reset();
    simulatedMac::joinWork();
    EXPECT_EQ(owned.use_count(), 1);
}

}  // namespace
}  // namespace tavrel
