#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>
#include <QImage>
#include <QTest>
#include <QWidget>
#include <QWindow>
#include <functional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ui/controls/Control.h"
#include "ui/controls/Label.h"
#include "ui/controls/Switch.h"

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << text.toStdString();
}
inline void PrintTo(const QRect& rect, std::ostream* out) {
    *out << rect.x() << ',' << rect.y() << ' ' << rect.width() << 'x' << rect.height();
}
inline void PrintTo(const QColor& color, std::ostream* out) {
    *out << color.name(QColor::HexArgb).toStdString();
}

namespace tavrel {

/// Lets the main loop do everything that is waiting now, and what that leads to.
inline void turn() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

/// Runs the main loop until `condition` holds. Returns false when it never does.
[[nodiscard]] inline bool runUntil(const std::function<bool()>& condition) {
    constexpr int never = 30'000;
    return QTest::qWaitFor(condition, never);
}

/// The time of all animations while this exists. It passes only frame by frame, when a test
/// says so, so that no test depends on how fast the machine is.
class AnimationClock : public QAnimationDriver {
public:
    static constexpr int frameMilliseconds = 16;

    AnimationClock() { install(); }

    void nextFrame() {
        // An animation that has just been started joins in the main loop's next turn.
        turn();
        elapsed_ += frameMilliseconds;
        advance();
    }

    void pass(int milliseconds) {
        for (int passed = 0; passed < milliseconds; passed += frameMilliseconds) {
            nextFrame();
        }
    }

    qint64 elapsed() const override { return elapsed_; }

protected:
    void start() override {
        elapsed_ = 0;
        QAnimationDriver::start();
    }

private:
    qint64 elapsed_ = 0;
};

/// Shows `window` and makes it the one that has the keyboard.
inline void showActive(QWidget& window) {
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    turn();
}

/// A press and release of the left button at `place`, delivered to `window`, so that it
/// reaches whatever is really there.
inline void clickAt(QWidget& window, const QPoint& place) {
    QTest::mouseMove(window.windowHandle(), place);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, place);
}

/// The same in the middle of `widget`.
inline void click(QWidget& widget) {
    clickAt(*widget.window(), widget.mapTo(widget.window(), widget.rect().center()));
}

/// A key typed into the window that `widget` is in.
inline void type(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(widget.window()->windowHandle(), key, modifiers);
}

/// The face of `control` in the coordinates of `ancestor`.
inline QRect faceIn(const Control& control, const QWidget& ancestor) {
    return control.face().translated(control.mapTo(&ancestor, QPoint(0, 0)));
}

inline QRect rectIn(const QWidget& widget, const QWidget& ancestor) {
    return {widget.mapTo(&ancestor, QPoint(0, 0)), widget.size()};
}

/// The texts that can be seen in `widget`, in the order in which they were made.
inline std::vector<QString> visibleTexts(const QWidget& widget) {
    std::vector<QString> texts;
    for (const Label* label : widget.findChildren<Label*>()) {
        if (label->isVisible()) {
            texts.push_back(label->text());
        }
    }
    return texts;
}

/// Counts the paint events of a widget and everything in it while it exists.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget& watched) : watched_(watched) { qApp->installEventFilter(this); }

    int count() const { return count_; }
    /// All that has been painted, in the watched widget's coordinates.
    const QRegion& region() const { return region_; }
    bool covers(const QRect& place) const { return (QRegion(place) - region_).isEmpty(); }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        auto* widget = qobject_cast<QWidget*>(object);
        if (event->type() == QEvent::Paint && widget != nullptr &&
            (widget == &watched_ || watched_.isAncestorOf(widget))) {
            ++count_;
            const auto* paint = static_cast<QPaintEvent*>(event);
            region_ += paint->region().translated(widget->mapTo(&watched_, QPoint(0, 0)));
        }
        return false;
    }

private:
    QWidget& watched_;
    int count_ = 0;
    QRegion region_;
};

/// Counts the events of one kind that a widget gets while it exists.
class EventCounter : public QObject {
public:
    EventCounter(QWidget& watched, QEvent::Type type) : type_(type) {
        watched.installEventFilter(this);
    }

    int count() const { return count_; }

protected:
    bool eventFilter(QObject* /*object*/, QEvent* event) override {
        count_ += event->type() == type_ ? 1 : 0;
        return false;
    }

private:
    QEvent::Type type_;
    int count_ = 0;
};

/// A square picture, in pixels, in which nothing has been drawn.
inline QImage canvas(int side = 40) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

/// Whether two colours differ by no more than `tolerance` in any channel.
inline testing::AssertionResult isNear(const QColor& a, const QColor& b, int tolerance = 3) {
    if (std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
        std::abs(a.blue() - b.blue()) <= tolerance) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << a.name().toStdString() << " is not near " << b.name().toStdString();
}

/// `color` as it looks over `ground`.
inline QColor over(const QColor& ground, const QColor& color) {
    const double alpha = color.alphaF();
    const auto mix = [alpha](int below, int above) {
        return static_cast<int>(std::lround(below * (1 - alpha) + above * alpha));
    };
    return {mix(ground.red(), color.red()), mix(ground.green(), color.green()),
            mix(ground.blue(), color.blue())};
}

/// The one fixture of all tests of widgets.
class WidgetTest : public testing::Test {
protected:
    /// Lets time pass until the knob of `control` stands still. Returns where it was before
    /// the first frame and after each.
    std::vector<double> knobPositions(const Switch& control) {
        constexpr std::size_t endless = 1000;
        std::vector<double> positions{control.knobPosition()};
        while (control.isMoving() && positions.size() < endless) {
            clock.nextFrame();
            positions.push_back(control.knobPosition());
        }
        EXPECT_LT(positions.size(), endless) << "the knob never stands still";
        return positions;
    }

    AnimationClock clock;
};

}  // namespace tavrel
