#pragma once

#include <functional>
#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

namespace tavrel {

/// Runs a task from within each request that the application quit, before the toolkit answers it.
///
/// A Mac that logs out asks every application whether it may end. The toolkit answers "cancel"
/// and quits afterwards, and the system then tells the user that the application has interrupted
/// the log-out and may end it at any moment. So what has to be done at the end is done inside the
/// question. On every system the toolkit turns each way of quitting into this request, but for an
/// end of its main loop that nobody asked for. Main thread only.
class QuitRequests : public QObject {
public:
    /// The application must outlive it. `requested` may be run several times, as one way of
    /// quitting may ask more than once.
    QuitRequests(QCoreApplication& application, std::function<void()> requested)
        : requested_(std::move(requested)) {
        application.installEventFilter(this);
    }

    bool eventFilter(QObject* receiver, QEvent* event) override {
        if (event->type() == QEvent::Quit && receiver == QCoreApplication::instance()) {
            requested_();
        }
        return QObject::eventFilter(receiver, event);
    }

private:
    std::function<void()> requested_;
};

}  // namespace tavrel
