#include <QTextDocument>

#include "tests/ui/Situations.h"
#include "tests/ui/WidgetTest.h"
#include "ui/DisplayRow.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::ElementsAre;

/// How much of a picture's part is nearly white: the icon, where one is drawn in white.
int whitePixels(const QImage& image, const QRect& part) {
    int count = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            count += qGray(image.pixel(x, y)) > 230 ? 1 : 0;
        }
    }
    return count;
}

class DisplayRowTest : public WidgetTest {
protected:
    /// What the row is given for `display`. What its switch does is in `changes`.
    DisplayRow::Inputs inputs(const DisplayDevice& display, bool isEnabled = true) {
        return {display, isEnabled, "Locked", "Why it is locked",
                [this](bool isOn) { changes.push_back(isOn); }};
    }

    void open(const DisplayRow::Inputs& shown) {
        window.setPalette(theme::darkPalette());
        window.resize(464, 78);
        row = new DisplayRow(shown, &window);
        row->setGeometry(window.rect());
        showActive(window);
    }

    Switch& powerSwitch() const { return *row->powerSwitch(); }
    Spinner& spinner() const { return *row->findChild<Spinner*>(); }
    Label& text(int index) const { return *row->findChildren<Label*>().at(index); }
    QImage picture() { return window.grab().toImage(); }

    const QRect iconBox{16, 15, 48, 48};
    QWidget window;
    DisplayRow* row = nullptr;
    std::vector<bool> changes;
};

TEST_F(DisplayRowTest, ABuiltInPanelThatIsOnHasAWhiteIcon) {
    open(inputs(builtInDisplay(true)));

    EXPECT_THAT(visibleTexts(*row),
                ElementsAre("MacBook Display", "Built-in panel · removed from desktop when off"));
    EXPECT_TRUE(powerSwitch().isVisible());
    EXPECT_TRUE(powerSwitch().isChecked());
    EXPECT_EQ(powerSwitch().text(), "On");
    EXPECT_GT(whitePixels(picture(), iconBox), 20);
}

TEST_F(DisplayRowTest, AnExternalMonitorThatIsOffHasADimIcon) {
    open(inputs(externalDisplay(false)));

    EXPECT_THAT(
        visibleTexts(*row),
        ElementsAre("External Display", "External monitor · removed from desktop when off"));
    EXPECT_FALSE(powerSwitch().isChecked());
    EXPECT_TRUE(powerSwitch().isEnabled());
    EXPECT_EQ(powerSwitch().text(), "Off");
    EXPECT_EQ(whitePixels(picture(), iconBox), 0);
}

TEST_F(DisplayRowTest, ItsTooltipAndDescriptionSayWhichMonitorItIs) {
    DisplayDevice display = externalDisplay(true);
    display.hardware = {"ACM 27U", "DP-2"};
    open(inputs(display));
    EXPECT_EQ(row->toolTip(), "ACM 27U · DP-2");
    EXPECT_EQ(row->accessibleDescription(), "ACM 27U · DP-2");
    EXPECT_THAT(
        visibleTexts(*row),
        ElementsAre("External Display", "External monitor · removed from desktop when off"));

    display.hardware = {"", "DP-3"};
    row->setInputs(inputs(display));
    EXPECT_EQ(row->toolTip(), "DP-3");
    EXPECT_EQ(row->accessibleDescription(), "DP-3");

    display.hardware = {};
    row->setInputs(inputs(display));
    EXPECT_EQ(row->toolTip(), "");
}

TEST_F(DisplayRowTest, WhatAMonitorCallsItselfIsNoMarkup) {
    DisplayDevice display = externalDisplay(true);
    display.hardware = {"A&B <b>27</b>", "DP-2"};

    open(inputs(display));

    QTextDocument shown;
    shown.setHtml(row->toolTip());
    EXPECT_EQ(shown.toPlainText(), "A&B <b>27</b> · DP-2");
    EXPECT_EQ(row->accessibleDescription(), "A&B <b>27</b> · DP-2");

    display.hardware = {"A&B", "DP-2"};
    row->setInputs(inputs(display));
    EXPECT_EQ(row->toolTip(), "A&B · DP-2");
}

TEST_F(DisplayRowTest, TheKindsHaveDifferentIcons) {
    open(inputs(builtInDisplay(true, 1)));
    const QImage builtIn = window.grab(iconBox).toImage();

    row->setInputs(inputs(externalDisplay(true, 1)));
    turn();

    EXPECT_NE(window.grab(iconBox).toImage(), builtIn);
}

TEST_F(DisplayRowTest, AnotherKindAndAnotherStateRedrawTheIcon) {
    open(inputs(externalDisplay(true, 1)));

    for (const DisplayDevice& next : {builtInDisplay(true, 1), builtInDisplay(false, 1)}) {
        const PaintCounter paints(*row);
        row->setInputs(inputs(next));
        EXPECT_TRUE(runUntil([&] { return paints.covers(iconBox); })) << next.isOn;
    }
}

TEST_F(DisplayRowTest, ASwitchThatMayNotBeUsedIsDisabledAndSaysWhy) {
    open(inputs(builtInDisplay(true), false));

    EXPECT_FALSE(powerSwitch().isEnabled());
    EXPECT_EQ(powerSwitch().toolTip(), "Why it is locked");
    EXPECT_THAT(
        visibleTexts(*row),
        ElementsAre("MacBook Display", "Built-in panel · removed from desktop when off", "Locked"));

    click(powerSwitch());
    type(*row, Qt::Key_Space);
    EXPECT_TRUE(changes.empty());
}

TEST_F(DisplayRowTest, ASwitchThatMayBeUsedHasNoLock) {
    open(inputs(externalDisplay(true)));

    EXPECT_EQ(visibleTexts(*row).size(), 2U);
    EXPECT_EQ(powerSwitch().toolTip(), "Enable or disable External Display");
    EXPECT_EQ(powerSwitch().accessibleName(), "External Display power");
}

TEST_F(DisplayRowTest, ABusyRowShowsOnlyTheSpinnerWhetherEnabledOrNot) {
    open(inputs(busy(externalDisplay(true)), false));

    for (const bool isEnabled : {false, true}) {
        row->setInputs(inputs(busy(externalDisplay(true)), isEnabled));
        EXPECT_TRUE(spinner().isVisible());
        EXPECT_FALSE(powerSwitch().isVisible());
        EXPECT_EQ(visibleTexts(*row).size(), 2U);
    }

    row->setInputs(inputs(externalDisplay(true)));
    EXPECT_FALSE(spinner().isVisible());
    EXPECT_TRUE(powerSwitch().isVisible());
}

TEST_F(DisplayRowTest, EachFlipIsHandedOnOnceWithTheNewPosition) {
    open(inputs(externalDisplay(true)));

    click(powerSwitch());
    EXPECT_THAT(changes, ElementsAre(false));

    row->setInputs(inputs(externalDisplay(false)));
    click(powerSwitch());
    EXPECT_THAT(changes, ElementsAre(false, true));
}

TEST_F(DisplayRowTest, AFlipThatChangesNothingShowsTheOldPositionAgain) {
    open(inputs(externalDisplay(true)));

    click(powerSwitch());

    const std::vector<double> positions = knobPositions(powerSwitch());
    EXPECT_THAT(positions, Contains(0));
    EXPECT_EQ(positions.back(), 1);
    EXPECT_TRUE(powerSwitch().isChecked());
    EXPECT_THAT(changes, ElementsAre(false));
}

TEST_F(DisplayRowTest, NewInputsAloneNeverCallOnChange) {
    open(inputs(externalDisplay(true)));

    row->setInputs(inputs(externalDisplay(false)));
    row->setInputs(inputs(busy(externalDisplay(false))));
    row->setInputs(inputs(externalDisplay(true), false));
    turn();

    EXPECT_TRUE(changes.empty());
}

TEST_F(DisplayRowTest, ItsPartsAreLaidOutAsDesigned) {
    open(inputs(externalDisplay(true)));

    const QRect name = text(0).geometry();
    const QRect explanation = text(1).geometry();
    EXPECT_EQ(row->height(), 78);
    EXPECT_EQ(faceIn(powerSwitch(), *row), QRect(464 - 16 - 46, 26, 46, 26));
    EXPECT_EQ(name.left(), 16 + 48 + 15);
    EXPECT_EQ(explanation.left(), name.left());
    EXPECT_EQ(explanation.top(), name.bottom() + 1 + 4);
    EXPECT_NEAR(name.top(), 78 - (explanation.bottom() + 1), 1);
}

TEST_F(DisplayRowTest, TheLockIsThreeBelowTheSwitchAndFlushRight) {
    open(inputs(externalDisplay(true), false));

    const QRect face = faceIn(powerSwitch(), *row);
    const QRect lock = text(2).geometry();
    EXPECT_EQ(lock.top(), face.bottom() + 1 + 3);
    EXPECT_EQ(lock.right(), face.right());
    EXPECT_NEAR(face.top(), 78 - (lock.bottom() + 1), 1);
}

TEST_F(DisplayRowTest, TheSpinnerIsCentredInABoxThirtyEightWide) {
    open(inputs(busy(externalDisplay(true))));

    const QRect place = spinner().geometry();
    EXPECT_EQ(place.left() - (464 - 16 - 38), 464 - 16 - (place.right() + 1));
    EXPECT_EQ(place.top(), 78 - (place.bottom() + 1));
}

TEST_F(DisplayRowTest, ANameTooLongIsCutBeforeTheSwitch) {
    open(inputs(externalDisplay(true, 2, std::string(200, 'W'))));

    EXPECT_EQ(text(0).text(), QString(200, u'W'));
    EXPECT_TRUE(text(0).visibleLines().first().endsWith(u'…'));
    EXPECT_EQ(text(0).geometry().right() + 1 + 30, faceIn(powerSwitch(), *row).left());
    EXPECT_EQ(row->height(), 78);
}

TEST_F(DisplayRowTest, TheExplanationIsWholeAlsoBesideTheLock) {
    open(inputs(externalDisplay(true), false));

    EXPECT_EQ(text(1).visibleLines(),
              QStringList("External monitor · removed from desktop when off"));
}

TEST_F(DisplayRowTest, ANameIsShownAsItIs) {
    const QString name = "<b>Über</b> & Ω 显示器";
    open(inputs(externalDisplay(true, 2, name.toStdString())));

    EXPECT_EQ(text(0).text(), name);
    EXPECT_EQ(text(0).visibleLines(), QStringList(name));
}

}  // namespace
}  // namespace tavrel
