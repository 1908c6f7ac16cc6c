#include "tests/ui/WidgetTest.h"
#include "ui/controls/RefreshButton.h"

namespace tavrel {
namespace {

class RefreshButtonTest : public testing::Test {
protected:
    RefreshButtonTest() {
        window.resize(100, 100);
        button.setFace({30, 30, 32, 32});
        showActive(window);
    }

    QWidget window;
    RefreshButton& button = *new RefreshButton("Refresh", &window);
};

TEST_F(RefreshButtonTest, TurnsClockwiseAndStartsOver) {
    button.setSpinning(true);
    double last = button.angle();
    bool hasTurnedForwards = false;
    bool hasStartedOver = false;
    ASSERT_TRUE(waitFor([&] {
        hasTurnedForwards |= button.angle() > last;
        hasStartedOver |= button.angle() < last;
        last = button.angle();
        return hasTurnedForwards && hasStartedOver;
    }));
    EXPECT_TRUE(button.isMoving());
}

TEST_F(RefreshButtonTest, ComesToRestUprightAndThenStands) {
    button.setSpinning(true);
    ASSERT_TRUE(waitFor([&] { return button.angle() > 90; }));
    button.setSpinning(false);
    EXPECT_TRUE(button.isMoving());
    ASSERT_TRUE(waitFor([&] { return !button.isMoving(); }));
    EXPECT_EQ(button.angle(), 0);
}

TEST_F(RefreshButtonTest, ThatEndsBeforeItHasTurnedStaysStill) {
    button.setSpinning(true);
    button.setSpinning(false);
    EXPECT_FALSE(button.isMoving());
    EXPECT_EQ(button.angle(), 0);
}

TEST_F(RefreshButtonTest, OnlyTheArrowOfTheCircleTurns) {
    const QImage upright = window.grab().toImage();
    button.setSpinning(true);
    ASSERT_TRUE(waitFor([&] { return button.angle() > 60 && button.angle() < 300; }));
    const QImage turned = window.grab().toImage();
    EXPECT_NE(turned, upright);
    EXPECT_EQ(turned.copy(30, 30, 32, 6), upright.copy(30, 30, 32, 6));
}

TEST_F(RefreshButtonTest, ItsCornersCannotBeHit) {
    int clicks = 0;
    QObject::connect(&button, &QAbstractButton::clicked, [&] { ++clicks; });
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {32, 32});
    EXPECT_EQ(clicks, 0);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {46, 46});
    EXPECT_EQ(clicks, 1);
}

}  // namespace
}  // namespace tavrel
