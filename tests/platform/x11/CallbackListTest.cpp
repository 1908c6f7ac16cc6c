#include "platform/x11/CallbackList.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include "tests/platform/x11/ReportRecorder.h"

namespace tavrel::x11 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A callback that does what the test says.
struct Scripted {
    static void callback(DisplayID, std::uint32_t, void* self) {
        static_cast<Scripted*>(self)->act();
    }
    std::function<void()> act;
};

TEST(CallbackListTest, CallsEveryCallbackWithItsUserInfo) {
    CallbackList list;
    ReportRecorder first;
    ReportRecorder second;
    list.call(1, 2);
    list.add(&ReportRecorder::callback, &first);
    list.add(&ReportRecorder::callback, &first);
    list.add(&ReportRecorder::callback, &second);
    list.call(3, 4);
    EXPECT_THAT(first.take(), ElementsAre(DisplayReport{3, 4}));
    EXPECT_THAT(second.take(), ElementsAre(DisplayReport{3, 4}));

    EXPECT_TRUE(list.remove(&ReportRecorder::callback, &first));
    EXPECT_FALSE(list.remove(&ReportRecorder::callback, &first));
    list.call(5, 6);
    EXPECT_THAT(first.take(), IsEmpty());
    EXPECT_THAT(second.take(), ElementsAre(DisplayReport{5, 6}));
}

TEST(CallbackListTest, RemovingWaitsForACallThatIsRunning) {
    CallbackList list;
    std::promise<void> entered;
    std::promise<void> mayLeave;
    std::atomic<bool> left = false;
    Scripted scripted{[&] {
        entered.set_value();
        mayLeave.get_future().wait();
        left = true;
    }};
    list.add(&Scripted::callback, &scripted);
    std::thread caller([&] { list.call(1, 1); });
    entered.get_future().wait();

    std::atomic<bool> removed = false;
    bool leftBefore = false;
    std::thread remover([&] {
        list.remove(&Scripted::callback, &scripted);
        leftBefore = left;
        removed = true;
    });
    // Nothing can show that a thread will wait for ever; a moment shows one that does not.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(removed);
    mayLeave.set_value();
    remover.join();
    caller.join();
    EXPECT_TRUE(leftBefore);
}

TEST(CallbackListTest, ACallbackMayRemoveItself) {
    CallbackList list;
    int calls = 0;
    Scripted scripted;
    scripted.act = [&] {
        ++calls;
        EXPECT_TRUE(list.remove(&Scripted::callback, &scripted));
    };
    list.add(&Scripted::callback, &scripted);
    list.call(1, 1);
    list.call(1, 1);
    EXPECT_EQ(calls, 1);
}

TEST(CallbackListTest, ACallbackRemovedByAnEarlierOneIsNotCalled) {
    CallbackList list;
    ReportRecorder later;
    Scripted scripted{[&] { list.remove(&ReportRecorder::callback, &later); }};
    list.add(&Scripted::callback, &scripted);
    list.add(&ReportRecorder::callback, &later);
    list.call(1, 1);
    EXPECT_THAT(later.take(), IsEmpty());
}

TEST(CallbackListTest, ACallbackMayCauseCallsOfItself) {
    CallbackList list;
    int depth = 0;
    Scripted scripted;
    scripted.act = [&] {
        if (++depth < 3) {
            list.call(1, 1);
        } else {
            list.remove(&Scripted::callback, &scripted);
        }
    };
    list.add(&Scripted::callback, &scripted);
    list.call(1, 1);
    EXPECT_EQ(depth, 3);
}

TEST(CallbackListTest, MayBeUsedFromManyThreads) {
    CallbackList list;
    std::atomic<int> calls = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 500; ++j) {
                Scripted scripted{[&] { ++calls; }};
                list.add(&Scripted::callback, &scripted);
                list.call(1, 1);
                EXPECT_TRUE(list.remove(&Scripted::callback, &scripted));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GE(calls, 4 * 500);
}

}  // namespace
}  // namespace tavrel::x11
