#include "platform/qt/QtMainQueue.h"

#include <algorithm>
#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QTimer>

namespace tavrel {

namespace {

constexpr QEvent::Type tasksWaiting = QEvent::User;

std::chrono::milliseconds roundedUp(Delay delay) {
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(delay),
                    std::chrono::milliseconds::zero());
}

class QtRepeatingTimer : public RepeatingTimer {
public:
    QtRepeatingTimer(Delay interval, Task tick) {
        timer_.setTimerType(Qt::PreciseTimer);
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
    // What a dropped task held may, on its way out, leave further tasks behind.
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
        if (tasks_.size() > 1) {
            return;  // The loop knows already.
        }
    }
    QCoreApplication::postEvent(this, new QEvent(tasksWaiting));
}

void QtMainQueue::asyncAfter(Delay delay, Task task) {
    const auto due = std::chrono::steady_clock::now() + delay;
    // The timer must be started on the main thread; the time until then counts.
    async([this, due, task = std::move(task)]() mutable {
        const Delay left = due - std::chrono::steady_clock::now();
        QTimer::singleShot(roundedUp(left), Qt::PreciseTimer, this,
                           [task = std::move(task)] { task(); });
    });
}

std::unique_ptr<RepeatingTimer> QtMainQueue::repeat(Delay interval, Task tick) {
    return std::make_unique<QtRepeatingTimer>(interval, std::move(tick));
}

bool QtMainQueue::isCurrent() const { return QThread::currentThread() == thread(); }

bool QtMainQueue::event(QEvent* event) {
    if (event->type() != tasksWaiting) {
        return QObject::event(event);
    }
    runTasksQueuedSoFar();
    return true;
}

void QtMainQueue::runTasksQueuedSoFar() {
    // Later ones wait for the loop's next turn, so that input and painting get theirs.
    std::size_t count = 0;
    {
        const std::lock_guard lock(mutex_);
        count = tasks_.size();
    }
    for (; count > 0; --count) {
        Task task;
        {
            const std::lock_guard lock(mutex_);
            if (tasks_.empty()) {
                return;  // A nested loop inside a task has run them.
            }
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
    const std::lock_guard lock(mutex_);
    if (!tasks_.empty()) {
        QCoreApplication::postEvent(this, new QEvent(tasksWaiting));
    }
}

}  // namespace tavrel
