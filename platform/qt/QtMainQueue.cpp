#include "platform/qt/QtMainQueue.h"

#include <algorithm>
#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QTimer>
#include <QTimerEvent>

namespace tavrel {

namespace {

constexpr QEvent::Type taskWaiting = QEvent::User;

std::chrono::milliseconds roundedUp(Delay delay) {
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(delay),
                    std::chrono::milliseconds::zero());
}

/// The toolkit has its very coarse timers tick when a second of the monotonic clock begins.
Qt::TimerType typeFor(Delay interval) {
    return interval % std::chrono::seconds(1) == Delay::zero() ? Qt::VeryCoarseTimer
                                                               : Qt::PreciseTimer;
}

class QtRepeatingTimer : public RepeatingTimer {
public:
    QtRepeatingTimer(Delay interval, Task tick) {
        timer_.setTimerType(typeFor(interval));
        timer_.setInterval(roundedUp(interval));
        timer_.callOnTimeout([tick = std::move(tick)] { tick(); });
        timer_.start();
    }

    void invalidate() override { timer_.stop(); }

private:
    QTimer timer_;
};

}  // namespace

QtMainQueue::~QtMainQueue() {
    dropTasks();
}

void QtMainQueue::runDueTasks() {
    QCoreApplication::sendPostedEvents(this, taskWaiting);
}

void QtMainQueue::dropTasks() {
    QCoreApplication::removePostedEvents(this, taskWaiting);
    // What a dropped task holds may add further tasks while it is destroyed.
    for (;;) {
        std::deque<Task> dropped;
        {
            const std::lock_guard lock(mutex_);
            dropped.swap(tasks_);
        }
        if (dropped.empty()) {
            return;
        }
    }
}

void QtMainQueue::async(Task task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    // One event each: a task that runs a nested loop does not hold up those behind it.
    QCoreApplication::postEvent(this, new QEvent(taskWaiting));
}

void QtMainQueue::asyncAfter(Delay delay, Task task) {
    const auto due = std::chrono::steady_clock::now() + delay;
    // The timer must be started on the main thread; the time until then is part of the delay.
    async([this, due, task = std::move(task)]() mutable {
        const Delay left = due - std::chrono::steady_clock::now();
        delayed_.emplace(startTimer(roundedUp(left), Qt::PreciseTimer), std::move(task));
    });
}

std::unique_ptr<RepeatingTimer> QtMainQueue::repeat(Delay interval, Task tick) {
    return std::make_unique<QtRepeatingTimer>(interval, std::move(tick));
}

bool QtMainQueue::isCurrent() const {
    return QThread::currentThread() == thread();
}

bool QtMainQueue::event(QEvent* event) {
    if (event->type() != taskWaiting) {
        return QObject::event(event);
    }
    runNextTask();
    return true;
}

void QtMainQueue::timerEvent(QTimerEvent* event) {
    killTimer(event->timerId());
    const auto due = delayed_.extract(event->timerId());
    due.mapped()();
}

void QtMainQueue::runNextTask() {
    Task task;
    {
        const std::lock_guard lock(mutex_);
        if (tasks_.empty()) {
            return;  // dropped after its event was posted
        }
        task = std::move(tasks_.front());
        tasks_.pop_front();
    }
    task();
}

}  // namespace tavrel
