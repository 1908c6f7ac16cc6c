#include <atomic>
#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include "platform/qt/QtMainQueue.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class QtMainQueueTest : public testing::Test {
protected:
    Task note(const std::string& what) {
        return [this, what] { log.push_back(what); };
    }

    /// Runs the loop until a task calls `stop`.
    void run() { loop.exec(); }
    Task stop() {
        return [this] { loop.quit(); };
    }

    int argc = 0;
    QCoreApplication application{argc, nullptr};
    QtMainQueue queue;
    QEventLoop loop;
    std::vector<std::string> log;
};

TEST_F(QtMainQueueTest, TasksRunInOrderAndNotBeforeTheCallReturns) {
    queue.async(note("a"));
    queue.async(note("b"));
    queue.async(stop());

    EXPECT_TRUE(log.empty());
    run();
    EXPECT_THAT(log, ElementsAre("a", "b"));
}

TEST_F(QtMainQueueTest, WhatIsDueRunsBeforeThereIsALoop) {
    queue.asyncAfter(10min, note("not due"));
    queue.async(note("a"));
    queue.async(note("b"));

    queue.runDueTasks();

    EXPECT_THAT(log, ElementsAre("a", "b"));
}

TEST_F(QtMainQueueTest, ATaskFromAnotherThreadRunsOnTheMainThread) {
    std::atomic<bool> isCurrentThere = true;
    bool isCurrentHere = false;

    std::thread other([&] {
        isCurrentThere = queue.isCurrent();
        queue.async([&] {
            isCurrentHere = queue.isCurrent();
            loop.quit();
        });
    });
    run();
    other.join();

    EXPECT_FALSE(isCurrentThere);
    EXPECT_TRUE(isCurrentHere);
}

TEST_F(QtMainQueueTest, ADelayedTaskFromAnotherThreadDoesNotRunEarly) {
    const auto start = std::chrono::steady_clock::now();

    std::thread other([&] { queue.asyncAfter(30ms, stop()); });
    run();
    other.join();

    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
}

TEST_F(QtMainQueueTest, ATaskThatRunsANestedLoopDoesNotHoldUpTheOthers) {
    queue.async([&] {
        QEventLoop nested;
        queue.async([&] {
            log.emplace_back("inside");
            nested.quit();
        });
        nested.exec();
        log.emplace_back("after");
    });
    queue.async(note("queued before the nested loop"));
    queue.asyncAfter(1ms, stop());

    run();

    EXPECT_THAT(log, ElementsAre("queued before the nested loop", "inside", "after"));
}

TEST_F(QtMainQueueTest, ATimerTicksUntilInvalidated) {
    std::unique_ptr<RepeatingTimer> timer;
    timer = queue.repeat(1ms, [&] {
        log.emplace_back("tick");
        if (log.size() == 3) {
            timer->invalidate();
            queue.asyncAfter(20ms, stop());
        }
    });

    run();

    EXPECT_EQ(log.size(), 3U);
}

TEST_F(QtMainQueueTest, ATimerTicksWhileANestedLoopRuns) {
    QEventLoop nested;
    const auto timer = queue.repeat(1ms, [&] {
        if (nested.isRunning()) {
            log.emplace_back("inside");
            nested.quit();
        }
    });
    queue.async([&] {
        nested.exec();
        loop.quit();
    });
    // Ends a test that has failed. Not by the queue: with nothing new to do, the toolkit's loop may
    // leave what was queued before it to the one around it.
    QTimer::singleShot(10s, &nested, &QEventLoop::quit);

    run();

    EXPECT_THAT(log, ElementsAre("inside"));
}

TEST_F(QtMainQueueTest, TimersOfWholeSecondsWakeTheThreadOnce) {
    int wakeUp = 0;
    std::set<int> ofTheFirst;
    std::set<int> ofTheSecond;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                     [&] { ++wakeUp; });
    const auto first = queue.repeat(1s, [&] { ofTheFirst.insert(wakeUp); });
    std::unique_ptr<RepeatingTimer> second;
    queue.asyncAfter(200ms, [&] {
        second = queue.repeat(1s, [&] {
            ofTheSecond.insert(wakeUp);
            queue.async(stop());
        });
    });

    run();

    EXPECT_THAT(ofTheFirst, testing::IsSupersetOf(ofTheSecond));
}

TEST_F(QtMainQueueTest, ADroppedTaskIsDestroyedAndDoesNotRun) {
    const auto held = std::make_shared<int>(1);
    queue.async([this, held] { log.emplace_back("never"); });
    EXPECT_EQ(held.use_count(), 2);

    queue.dropTasks();

    EXPECT_EQ(held.use_count(), 1);
    queue.async(stop());
    run();
    EXPECT_TRUE(log.empty());
}

TEST_F(QtMainQueueTest, ATaskAddedWhileAnotherIsDroppedIsDroppedToo) {
    std::shared_ptr<void> last(nullptr, [this](void*) { queue.async(note("never")); });
    queue.async([last = std::move(last)] {});

    queue.dropTasks();

    queue.async(stop());
    run();
    EXPECT_TRUE(log.empty());
}

}  // namespace
}  // namespace tavrel
