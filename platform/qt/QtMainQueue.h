#pragma once

#include <deque>
#include <map>
#include <mutex>

#include <QObject>

#include "platform/MainQueue.h"

namespace tavrel {

/// The main queue on the toolkit's main loop.
///
/// Created and destroyed on the main thread while a QCoreApplication exists. Tasks wait in
/// its own queue, under one mutex; the loop only gets an event for each of them.
class QtMainQueue : public QObject, public MainQueue {
public:
    QtMainQueue() = default;
    ~QtMainQueue() override;

    /// Runs the tasks that are due, as the main loop would; what they add waits for that. Main
    /// thread only.
    void runDueTasks();

    /// Destroys the tasks that are due and have not run yet. Main thread only.
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
    /// Tasks that wait for a timer, by the timer's number. Main thread only.
    std::map<int, Task> delayed_;
};

}  // namespace tavrel
