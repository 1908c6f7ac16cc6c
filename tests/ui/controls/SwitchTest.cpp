#include "tests/ui/WidgetTest.h"
#include "ui/controls/Switch.h"

namespace tavrel {
namespace {

using testing::ElementsAre;

class SwitchTest : public WidgetTest {
protected:
    SwitchTest() {
        window.resize(200, 100);
        control.setFace({{20, 20}, Switch::faceSize});
        QObject::connect(&control, &Switch::flipped, [this](bool isOn) { flips.push_back(isOn); });
    }

    void open() { showActive(window); }
    QRect face() const { return faceIn(control, window); }
    QImage picture() {
        turn();
        return window.grab().toImage();
    }

    const QPoint besideIt{150, 90};
    QWidget window;
    Switch& control = *new Switch(&window);
    std::vector<bool> flips;
};

TEST_F(SwitchTest, SpaceReturnAndEnterFlipItOnceEach) {
    open();
    control.setFocus(Qt::TabFocusReason);

    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        flips.clear();
        type(control, key);
        EXPECT_THAT(flips, ElementsAre(true)) << key;
    }
    EXPECT_FALSE(control.isChecked());
}

TEST_F(SwitchTest, AFlipIsSignalledBeforeItIsPainted) {
    open();
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, face().center());
    turn();
    const EventCounter paints(control, QEvent::Paint);
    std::vector<int> paintsBefore;
    QObject::connect(&control, &Switch::flipped, [&] { paintsBefore.push_back(paints.count()); });

    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, face().center());

    EXPECT_THAT(paintsBefore, ElementsAre(0));
    EXPECT_GE(paints.count(), 1);
}

TEST_F(SwitchTest, AKeyHeldDownIsOneFlip) {
    open();
    control.setFocus(Qt::TabFocusReason);

    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        flips.clear();
        QKeyEvent press(QEvent::KeyPress, key, {}, {});
        QKeyEvent again(QEvent::KeyPress, key, {}, {}, true);
        QKeyEvent release(QEvent::KeyRelease, key, {}, {});
        for (QKeyEvent* event : {&press, &again, &again, &release}) {
            QCoreApplication::sendEvent(&control, event);
        }
        EXPECT_THAT(flips, ElementsAre(true)) << key;
    }
}

TEST_F(SwitchTest, OnlyTheLeftButtonOnItsFaceFlipsIt) {
    open();

    clickAt(window, face().topLeft() - QPoint(2, 2));
    clickAt(window, face().topLeft() + QPoint(1, 1));
    QTest::mouseClick(window.windowHandle(), Qt::RightButton, {}, face().center());
    EXPECT_TRUE(flips.empty());

    clickAt(window, face().center());
    EXPECT_EQ(flips.size(), 1U);
}

TEST_F(SwitchTest, APressThatIsReleasedElsewhereIsNoFlip) {
    open();

    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, face().center());
    QTest::mouseMove(window.windowHandle(), besideIt);
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, besideIt);

    EXPECT_TRUE(flips.empty());
}

TEST_F(SwitchTest, TheKnobMovesSteadilyFromOneSideToTheOther) {
    open();

    control.setOn(true);

    const std::vector<double> positions = knobPositions(control);
    EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
    EXPECT_EQ(positions.front(), 0);
    EXPECT_EQ(positions.back(), 1);
    EXPECT_THAT(positions, testing::Contains(testing::AllOf(testing::Gt(0.3), testing::Lt(0.7))));
}

TEST_F(SwitchTest, AModelThatFollowsTheFlipKeepsTheKnobThere) {
    open();
    QObject::connect(&control, &Switch::flipped, &control, &Switch::setOn);

    click(control);

    const std::vector<double> positions = knobPositions(control);
    EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
    EXPECT_EQ(positions.back(), 1);
    EXPECT_TRUE(control.isChecked());
}

TEST_F(SwitchTest, TheKnobOfAHiddenSwitchIsWhereTheModelSays) {
    control.setOn(true);
    EXPECT_FALSE(control.isMoving());
    EXPECT_EQ(control.knobPosition(), 1);

    open();
    click(control);
    EXPECT_TRUE(control.isMoving());

    control.hide();
    EXPECT_FALSE(control.isMoving());
    EXPECT_EQ(control.knobPosition(), 1);
}

TEST_F(SwitchTest, ADisabledSwitchIgnoresMouseAndKeyboard) {
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
    const QImage without = picture();

    control.setFocus(Qt::TabFocusReason);

    const QImage with = picture();
    const QPoint ring(face().center().x(), face().top() - 3);
    const QPoint beyond(face().center().x(), face().top() - Control::ringMargin - 1);
    EXPECT_NE(with.pixel(ring), without.pixel(ring));
    EXPECT_EQ(with.pixel(face().center()), without.pixel(face().center()));
    EXPECT_EQ(with.pixel(beyond), without.pixel(beyond));
}

TEST_F(SwitchTest, HoveringChangesTheLookAndLeavingRestoresIt) {
    open();
    QTest::mouseMove(window.windowHandle(), besideIt);
    const QImage away = picture();

    QTest::mouseMove(window.windowHandle(), face().center());
    EXPECT_NE(picture(), away);

    QTest::mouseMove(window.windowHandle(), besideIt);
    EXPECT_EQ(picture(), away);
}

}  // namespace
}  // namespace tavrel
