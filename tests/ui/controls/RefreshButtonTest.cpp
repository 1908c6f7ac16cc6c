#include <QPainter>
#include <cmath>

#include "tests/ui/WidgetTest.h"
#include "ui/controls/RefreshButton.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

class RefreshButtonTest : public WidgetTest {
protected:
    void SetUp() override {
        window.resize(100, 100);
        button.setFace({30, 30, 32, 32});
        showActive(window);
    }

    QWidget window;
    RefreshButton& button = *new RefreshButton("Refresh", &window);
};

TEST_F(RefreshButtonTest, TheArrowTurnsClockwiseAndStartsOver) {
    button.setSpinning(true);

    clock.pass(300);
    const double first = button.angle();
    clock.pass(300);
    const double second = button.angle();
    clock.pass(400);

    EXPECT_GT(first, 0);
    EXPECT_GT(second, first);
    EXPECT_LT(button.angle(), first);
    EXPECT_TRUE(button.isMoving());
}

TEST_F(RefreshButtonTest, TheArrowTurnsEvenlyAndOnceInNineTenthsOfASecond) {
    constexpr double perFrame = 360.0 * AnimationClock::frameMilliseconds / 900;
    button.setSpinning(true);
    clock.nextFrame();

    // For two turns and a half.
    double last = button.angle();
    for (int frame = 0; frame < 140; ++frame) {
        clock.nextFrame();
        const double turned = std::fmod(button.angle() - last + 360, 360);
        EXPECT_NEAR(turned, perFrame, 0.01) << frame;
        last = button.angle();
    }
}

TEST_F(RefreshButtonTest, TheArrowCompletesItsTurnAndThenStandsStill) {
    button.setSpinning(true);
    clock.pass(300);
    const double angle = button.angle();

    button.setSpinning(false);
    clock.pass(150);
    EXPECT_GT(button.angle(), angle);
    EXPECT_TRUE(button.isMoving());

    clock.pass(300);
    EXPECT_EQ(button.angle(), 0);
    EXPECT_FALSE(button.isMoving());
}

TEST_F(RefreshButtonTest, TheArrowOfARefreshThatEndsAtOnceStaysStill) {
    button.setSpinning(true);
    button.setSpinning(false);

    EXPECT_FALSE(button.isMoving());
    EXPECT_EQ(button.angle(), 0);
}

TEST_F(RefreshButtonTest, OnlyTheArrowTurnsAndNotItsCircle) {
    const QImage still = window.grab().toImage();

    button.setSpinning(true);
    clock.pass(300);

    const QImage turned = window.grab().toImage();
    EXPECT_NE(turned, still);
    EXPECT_EQ(turned.copy(30, 30, 32, 6), still.copy(30, 30, 32, 6));
}

TEST_F(RefreshButtonTest, TheArrowIsDrawnAsFarClockwiseAsItHasTurned) {
    const QRectF face(30, 30, 32, 32);
    QImage expected = window.grab().toImage();
    const QColor ground = expected.pixelColor(0, 0);
    button.setSpinning(true);
    clock.pass(150);
    ASSERT_GT(button.angle(), 30);

    {
        QPainter painter(&expected);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(face, ground);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme::white(0.08));
        painter.drawEllipse(face);
        painter.translate(face.center());
        painter.rotate(button.angle());
        paintIcon(painter, Icon::arrowClockwise, {-8.125, -8.125, 16.25, 16.25}, theme::white());
    }

    const QImage actual = window.grab().toImage();
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x) {
            EXPECT_TRUE(isNear(actual.pixelColor(x, y), expected.pixelColor(x, y)))
                << x << ',' << y;
        }
    }
}

TEST_F(RefreshButtonTest, TheCornersAroundTheCircleCannotBeHit) {
    int clicks = 0;
    QObject::connect(&button, &Control::activated, [&] { ++clicks; });

    clickAt(window, {32, 32});
    EXPECT_EQ(clicks, 0);

    clickAt(window, {46, 46});
    EXPECT_EQ(clicks, 1);
}

}  // namespace
}  // namespace tavrel
