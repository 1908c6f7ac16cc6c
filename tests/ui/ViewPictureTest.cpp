// What is drawn in the window, compared with a drawing of the design.
#include <QImage>
#include <QPainter>

#include <functional>

#include "tests/ui/ViewTest.h"
#include "ui/paint/Backdrop.h"
#include "ui/paint/DesignFont.h"
#include "ui/paint/Drawing.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr theme::FontSpec statusFont{11.5, QFont::Medium};

/// Whether two pictures are the same in `part`, but for what rounding does to a colour.
testing::AssertionResult areAlike(const QImage& actual, const QImage& expected, const QRect& part) {
    constexpr int tolerance = 2;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (const auto near =
                    isNear(actual.pixelColor(x, y), expected.pixelColor(x, y), tolerance);
                !near) {
                return testing::AssertionFailure() << near.message() << " at " << x << "," << y;
            }
        }
    }
    return testing::AssertionSuccess();
}

class ViewPictureTest : public ViewTest {
protected:
    /// The bare background with what `paint` adds.
    static QImage design(const std::function<void(QPainter&)>& paint) {
        QImage image = Backdrop().image({520, 486}, 1, {0, 0, 520, 486});
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        paint(painter);
        return image;
    }

    static void fill(QPainter& painter, const QPainterPath& shape, const QColor& color) {
        painter.fillPath(shape, color);
    }
    static void stroke(QPainter& painter, const QRectF& rect, double radius, const QColor& color) {
        painter.strokePath(continuousRoundedRect(rect, radius), QPen(color, 1));
    }
    static void write(QPainter& painter, const theme::FontSpec& spec, const QPointF& baseline,
                      const QString& text, const QColor& color) {
        painter.setPen(color);
        DesignFont(spec).draw(painter, baseline, text);
    }

    /// A square with this middle, for an icon.
    static QRectF square(const QPointF& middle, double side) {
        return {middle.x() - side / 2, middle.y() - side / 2, side, side};
    }
    /// The middle of a rectangle of whole pixels.
    static QPointF middle(const QRect& rect) { return QRectF(rect).center(); }

    static void paintRow(QPainter& painter, const QRect& place, Icon icon, bool isOn) {
        // Both are white: what is drawn first makes no difference but to rounding.
        stroke(painter, place, 14, theme::white(0.09));
        fill(painter, continuousRoundedRect(place, 14), theme::white(0.06));
        const QRectF box(place.left() + 16, place.top() + 15, 48, 48);
        fill(painter, continuousRoundedRect(box, 12),
             isOn ? theme::withAlpha(theme::indigo, 0.55) : theme::white(0.055));
        paintIcon(painter, icon, square(box.center(), 27.5), theme::white(isOn ? 1 : 0.35));
    }

    Label* statusLine() const {
        return visible<Label>([](const Label& each) {
            return each.text() == "Ready" && each.fontSpec().size == statusFont.size;
        });
    }
};

TEST_F(ViewPictureTest, TheEmptyStateShowsTheWarningIconTwelveAboveItsText) {
    open(Situation{});
    const QRect state = rectIn(*visible<EmptyState>(), *view);
    const QRect line = rectIn(*visible<EmptyState>()->findChild<Label*>(), *view);
    const double top = state.top() + (state.height() - 37.5 - 12 - line.height()) / 2;

    const QImage expected = design([&](QPainter& painter) {
        paintIcon(painter, Icon::displayWithWarning, square({260, top + 37.5 / 2}, 37.5),
                  theme::white(0.55));
    });

    // All above the text.
    EXPECT_NEAR(top + 37.5 + 12, line.top(), 0.5);
    EXPECT_TRUE(areAlike(picture(), expected,
                         {state.left(), state.top(), state.width(), line.top() - state.top()}));
}

TEST_F(ViewPictureTest, TheEmptyStateOfARefreshShowsNothingBesideTheSpinnerAndTheText) {
    open(Situation{.isRefreshing = true});
    const QRect state = rectIn(*visible<EmptyState>(), *view);
    const QRect line = rectIn(*visible<EmptyState>()->findChild<Label*>(), *view);
    const QRect spinner = rectIn(*visible<Spinner>(), *view);
    const QImage actual = picture();
    const QImage expected = design([](QPainter&) {});

    for (const QRect& part : QRegion(state) - line - spinner) {
        EXPECT_TRUE(areAlike(actual, expected, part));
    }
    EXPECT_FALSE(areAlike(actual, expected, spinner));
    EXPECT_FALSE(areAlike(actual, expected, line));
}

TEST_F(ViewPictureTest, TheStatusIsADotOfSevenThenSevenFreeThenTheText) {
    for (const bool isRefreshing : {false, true}) {
        for (const std::vector<DisplayDevice>& displays :
             {std::vector<DisplayDevice>{}, {builtInDisplay(true)}}) {
            SCOPED_TRACE(testing::Message() << isRefreshing << displays.size());
            open(Situation{.displays = displays, .isRefreshing = isRefreshing});
            const QRect line = rectIn(*statusLine(), *view);

            const QImage expected = design([&](QPainter& painter) {
                QPainterPath dot;
                dot.addEllipse(QRectF(line.left(), middle(line).y() - 3.5, 7, 7));
                fill(painter, dot, isRefreshing ? QColor(255, 159, 10) : QColor(48, 209, 88));
                const DesignFont font(statusFont);
                const double above = (line.height() - font.lineHeight()) / 2;
                write(painter, statusFont, {line.left() + 14.0, line.top() + above + font.ascent()},
                      "Ready", theme::white(0.5));
            });

            EXPECT_TRUE(areAlike(picture(), expected, line));
        }
    }
}

TEST_F(ViewPictureTest, TheWakeButtonShowsTheSunAndItsLabel) {
    open({builtInDisplay(true)});
    const QRect face = faceIn(wakeButton(), *view);
    const QRect hint = rectIn(*text("⌃⌥⌘W"), *view);

    const QImage expected = design([&](QPainter& painter) {
        fill(painter, continuousRoundedRect(face, 10), theme::white(0.08));
        stroke(painter, face, 10, theme::white(0.1));
        paintIcon(painter, Icon::sunMaxFill,
                  {face.left() + 15.0, middle(face).y() - 16.875 / 2, 16.875, 16.875},
                  theme::white());
        const theme::FontSpec spec{13.5, QFont::DemiBold, theme::FontDesign::rounded};
        const DesignFont font(spec);
        write(painter, spec,
              {face.left() + 15 + 16.875 + 7,
               middle(face).y() + (font.ascent() - font.descent()) / 2},
              "Wake both displays", theme::white());
    });

    const QImage actual = picture();
    for (const QRect& part : QRegion(face.adjusted(-2, -2, 2, 2)) - hint) {
        EXPECT_TRUE(areAlike(actual, expected, part));
    }
}

TEST_F(ViewPictureTest, TheRefreshButtonIsAnArrowInACircle) {
    open({builtInDisplay(true)});
    const QRect face = faceIn(refreshButton(), *view);

    const QImage expected = design([&](QPainter& painter) {
        QPainterPath circle;
        circle.addEllipse(face);
        fill(painter, circle, theme::white(0.08));
        paintIcon(painter, Icon::arrowClockwise, square(middle(face), 16.25), theme::white());
    });

    EXPECT_TRUE(areAlike(picture(), expected, face.adjusted(-2, -2, 2, 2)));
}

TEST_F(ViewPictureTest, ARowShowsTheIconOfItsKindAsItIsOnOrOff) {
    open({builtInDisplay(true, 1), externalDisplay(true, 2), externalDisplay(false, 3)});
    const QImage actual = picture();

    const auto expectLook = [&](std::size_t index, Icon icon, bool isOn) {
        SCOPED_TRACE(index);
        const QRect place = rectIn(row(index), *view);
        const QImage expected =
            design([&](QPainter& painter) { paintRow(painter, place, icon, isOn); });
        const QRect around = place.adjusted(-2, -2, 2, 2);
        // Left of the texts, and right of the switch.
        EXPECT_TRUE(areAlike(actual, expected, {around.topLeft(), QSize(76, 82)}));
        EXPECT_TRUE(areAlike(actual, expected, {around.topRight() - QPoint(14, 0), QSize(15, 82)}));
    };

    expectLook(0, Icon::laptopComputer, true);
    expectLook(1, Icon::display, true);
    expectLook(2, Icon::display, false);

    setDisplays({builtInDisplay(false, 1), externalDisplay(true, 2), externalDisplay(false, 3)});
    const QRect place = rectIn(row(0), *view);
    const QImage expected =
        design([&](QPainter& painter) { paintRow(painter, place, Icon::laptopComputer, false); });
    EXPECT_TRUE(areAlike(picture(), expected, {place.topLeft(), QSize(74, 78)}));
}

TEST_F(ViewPictureTest, TheLockStandsBeforeItsLabel) {
    open({builtInDisplay(true)});
    const QRect place = rectIn(row(0), *view);
    const QRect lock = rectIn(*text("Must stay on"), *view);

    const QImage expected = design([&](QPainter& painter) {
        paintRow(painter, place, Icon::laptopComputer, true);
        paintIcon(painter, Icon::lockFill,
                  {lock.left() + 0.0, middle(lock).y() - 11.875 / 2, 11.875, 11.875},
                  theme::white(0.38));
        const theme::FontSpec spec{9.5, QFont::Medium};
        const DesignFont font(spec);
        const double above = (lock.height() - font.lineHeight()) / 2;
        write(painter, spec, {lock.left() + 11.875 + 2, lock.top() + above + font.ascent()},
              "Must stay on", theme::white(0.38));
    });

    EXPECT_TRUE(areAlike(picture(), expected, lock));
}

}  // namespace
}  // namespace tavrel
