#pragma once

#include <QObject>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QWidget>

namespace tavrel {

/// Keeps a window where it can be seen: when the layout of the screens changes and leaves
/// part of it on none, it moves, whole, to one that is there. Needs no window manager.
/// Main thread only.
class WindowKeeper : public QObject {
public:
    /// `window` is not owned and may go first.
    explicit WindowKeeper(QWidget& window);

private:
    void watch(QScreen* screen);
    void checkSoon();
    void check();

    QPointer<QWidget> window_;
    /// Runs out in the loop's next turn, however often it is started until then.
    QTimer checkTimer_;
};

/// Where a window that has `frame` should be so that all of it is on the `screens`: where
/// it is if it is whole there, else centred on the screen that shows most of it, or on the
/// first when none does. Unmoved when there are no screens.
QRect keptVisible(const QRect& frame, const QList<QRect>& screens);

}  // namespace tavrel
