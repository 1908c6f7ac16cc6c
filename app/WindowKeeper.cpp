#include "app/WindowKeeper.h"

#include <algorithm>

#include <QCursor>
#include <QGuiApplication>
#include <QRegion>

namespace tavrel {

namespace {

qint64 sharedArea(const QRect& a, const QRect& b) {
    const QRect shared = a & b;
    return shared.isEmpty() ? 0 : qint64{shared.width()} * shared.height();
}

QRect centredOn(const QRect& screen, QRect frame) {
    frame.moveCenter(screen.center());
    // On a screen smaller than the window its title and first row matter most.
    frame.moveLeft(std::max(frame.left(), screen.left()));
    frame.moveTop(std::max(frame.top(), screen.top()));
    return frame;
}

}  // namespace

QRect keptVisible(const QRect& frame, const QList<QRect>& screens) {
    QRegion visible;
    for (const QRect& screen : screens) {
        visible += screen;
    }
    if (screens.isEmpty() || QRegion(frame).subtracted(visible).isEmpty()) {
        return frame;
    }
    const QRect target =
        *std::max_element(screens.begin(), screens.end(), [&](const QRect& a, const QRect& b) {
            return sharedArea(frame, a) < sharedArea(frame, b);
        });
    return centredOn(target, frame);
}

void placeAtPointer(QWidget& window) {
    if (const QScreen* screen = QGuiApplication::screenAt(QCursor::pos())) {
        const QRect place(QPoint(0, 0), window.size());
        window.move(centredOn(screen->availableGeometry(), place).topLeft());
    }
}

WindowKeeper::WindowKeeper(QWidget& window) : window_(&window) {
    checkTimer_.setSingleShot(true);
    checkTimer_.setInterval(0);
    connect(&checkTimer_, &QTimer::timeout, this, &WindowKeeper::check);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &WindowKeeper::watch);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WindowKeeper::checkSoon);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &WindowKeeper::checkSoon);
    for (QScreen* screen : QGuiApplication::screens()) {
        watch(screen);
    }
}

void WindowKeeper::watch(QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, &WindowKeeper::checkSoon);
    checkSoon();
}

void WindowKeeper::checkSoon() {
    // The toolkit is still busy with the change that it tells us of.
    checkTimer_.start();
}

void WindowKeeper::check() {
    if (window_ == nullptr || !window_->isVisible()) {
        return;
    }
    QList<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (!screen->geometry().isEmpty()) {
            screens.append(screen->geometry());
        }
    }
    const QRect frame = window_->frameGeometry();
    const QRect kept = keptVisible(frame, screens);
    if (kept != frame) {
        window_->move(kept.topLeft());
        window_->raise();
    }
}

}  // namespace tavrel
