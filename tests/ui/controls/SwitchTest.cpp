#include "tests/ui/WidgetTest.h"
#include "ui/controls/Switch.h"

namespace tavrel {
namespace {

using testing::ElementsAre;

class SwitchTest : public testing::Test {
protected:
    SwitchTest() {
        window.resize(200, 100);
        control.setFace({{20, 20}, Switch::faceSize});
        QObject::connect(&control, &Switch::flipped, [this](bool isOn) { flips.push_back(isOn); });
    }

    void open() { showActive(window); }

    QWidget window;
    Switch& control = *new Switch(&window);
    std::vector<bool> flips;
};

TEST_F(SwitchTest, SpaceAndEnterFlipIt) {
    open();
    control.setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        flips.clear();
        type(control, key);
        EXPECT_THAT(flips, ElementsAre(true)) << key;
    }
    EXPECT_FALSE(control.isChecked());
}

TEST_F(SwitchTest, AKeyHeldDownIsOneFlip) {
    open();
    control.setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        flips.clear();
        QKeyEvent press(QEvent::KeyPress, key, {}, {});
        QKeyEvent again(QEvent::KeyPress, key, {}, {}, true);
        QKeyEvent release(QEvent::KeyRelease, key, {}, {});
        QCoreApplication::sendEvent(&control, &press);
        QCoreApplication::sendEvent(&control, &again);
        QCoreApplication::sendEvent(&control, &again);
        QCoreApplication::sendEvent(&control, &release);
        EXPECT_THAT(flips, ElementsAre(true)) << key;
    }
}

TEST_F(SwitchTest, OnlyItsFaceCanBeHit) {
    open();
    QWindow* handle = window.windowHandle();
    const QRect face = faceIn(control, window);
    QTest::mouseClick(handle, Qt::LeftButton, {}, face.topLeft() - QPoint(2, 2));
    QTest::mouseClick(handle, Qt::LeftButton, {}, face.topLeft() + QPoint(1, 1));
    QTest::mouseClick(handle, Qt::RightButton, {}, face.center());
    EXPECT_TRUE(flips.empty());
    QTest::mouseClick(handle, Qt::LeftButton, {}, face.center());
    EXPECT_EQ(flips.size(), 1U);
}

TEST_F(SwitchTest, APressThatIsTakenAwayAgainIsNoFlip) {
    open();
    QWindow* handle = window.windowHandle();
    QTest::mousePress(handle, Qt::LeftButton, {}, faceIn(control, window).center());
    QTest::mouseMove(handle, {150, 90});
    QTest::mouseRelease(handle, Qt::LeftButton, {}, {150, 90});
    EXPECT_TRUE(flips.empty());
}

TEST_F(SwitchTest, TheKnobTravelsThroughTheMiddle) {
    open();
    std::vector<double> positions;
    control.setOn(true);
    ASSERT_TRUE(waitFor([&] {
        positions.push_back(control.knobPosition());
        return !control.isMoving();
    }));
    EXPECT_EQ(control.knobPosition(), 1);
    EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
    EXPECT_EQ(positions.front(), 0);
}

TEST_F(SwitchTest, AModelThatFollowsTheFlipKeepsTheKnobThere) {
    open();
    QObject::connect(&control, &Switch::flipped, &control, &Switch::setOn);
    click(control);
    ASSERT_TRUE(waitFor([&] { return !control.isMoving(); }));
    EXPECT_EQ(control.knobPosition(), 1);
    EXPECT_TRUE(control.isChecked());
}

TEST_F(SwitchTest, HiddenItNeverMoves) {
    control.setOn(true);
    EXPECT_FALSE(control.isMoving());
    EXPECT_EQ(control.knobPosition(), 1);
    open();
    EXPECT_EQ(control.knobPosition(), 1);
    click(control);
    EXPECT_TRUE(control.isMoving());
    control.hide();
    EXPECT_FALSE(control.isMoving());
    EXPECT_EQ(control.knobPosition(), 1);
}

TEST_F(SwitchTest, DisabledItIgnoresMouseAndKeyboard) {
    open();
    control.setEnabled(false);
    click(control);
    control.setFocus(Qt::TabFocusReason);
    type(control, Qt::Key_Space);
    control.click();
    EXPECT_TRUE(flips.empty());
}

TEST_F(SwitchTest, TheFocusRingIsDrawnAroundTheFace) {
    open();
    window.setFocus();
    turn();
    const QImage without = window.grab().toImage();
    control.setFocus(Qt::TabFocusReason);
    turn();
    const QImage with = window.grab().toImage();
    const QRect face = faceIn(control, window);
    const QPoint above(face.center().x(), face.top() - 3);
    EXPECT_NE(with.pixel(above), without.pixel(above));
    EXPECT_EQ(with.pixel(face.center()), without.pixel(face.center()));
    const QPoint beyond(face.center().x(), face.top() - Control::ringMargin - 1);
    EXPECT_EQ(with.pixel(beyond), without.pixel(beyond));
}

TEST_F(SwitchTest, HoveringChangesTheLookAndLeavingRestoresIt) {
    open();
    QWindow* handle = window.windowHandle();
    QTest::mouseMove(handle, {150, 90});
    turn();
    const QImage away = window.grab().toImage();
    QTest::mouseMove(handle, faceIn(control, window).center());
    turn();
    EXPECT_NE(window.grab().toImage(), away);
    QTest::mouseMove(handle, {150, 90});
    turn();
    EXPECT_EQ(window.grab().toImage(), away);
}

}  // namespace
}  // namespace tavrel
