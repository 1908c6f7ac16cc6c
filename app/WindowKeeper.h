#pragma once

#include <QObject>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QWidget>

namespace tavrel {

/// Keeps a window visible: when the layout of the screens changes and part of the window is
/// on no screen, it moves the whole window to one. Needs no window manager. Main thread only.
class WindowKeeper : public QObject {
public:
    /// `window` is not owned and may go first.
    explicit WindowKeeper(QWidget& window);

private:
    void watch(QScreen* screen);
    void checkSoon();
    void check();

    QPointer<QWidget> window_;
    /// Checks once in the event loop's next turn, however often it is started until then.
    QTimer checkTimer_;
};

/// Puts a window that has not been shown yet in the middle of the screen the pointer is on, where
/// its user is looking. Leaves it alone when no screen is there, and where the system lets no
/// application place its windows.
void placeAtPointer(QWidget& window);

/// `frame`, moved so that all of it is on the `screens`: unmoved if all of it is, else centred
/// on the screen that shows most of it, or on the first when none does. Also unmoved when
/// there are no screens.
QRect keptVisible(const QRect& frame, const QList<QRect>& screens);

}  // namespace tavrel
