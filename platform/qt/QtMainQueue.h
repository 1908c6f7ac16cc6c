#pragma once

#include <deque>
#include <map>
#include <mutex>

#include <QObject>

#include "platform/MainQueue.h"

namespace tavrel {

/// The main queue on the toolkit's main loop.
///
/// To be made and destroyed on the main thread, while a QCoreApplication exists. The
/// tasks wait in a queue of its own; the loop is only ever told that there is something
/// to do, so what is handed between threads passes through one plain mutex.
class QtMainQueue : public QObject, public MainQueue {
public:
    QtMainQueue() = default;
    ~QtMainQueue() override;

    /// Destroys the tasks that are due but have not run. Main thread only.
    void dropTasks();

    void async(Task task) override;
    void asyncAfter(Delay delay, Task task) override;
    std::unique_ptr<RepeatingTimer> repeat(Delay interval, Task tick) override;
    bool isCurrent() const override;

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void runNextTask();

    std::mutex mutex_;
    std::deque<Task> tasks_;
    /// The main thread's: what waits for a timer, by the timer's number.
    std::map<int, Task> delayed_;
};

}  // namespace tavrel
