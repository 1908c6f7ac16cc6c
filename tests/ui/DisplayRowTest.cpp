#include "tests/ui/Situations.h"
#include "tests/ui/WidgetTest.h"
#include "ui/DisplayRow.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

using testing::ElementsAre;

class DisplayRowTest : public testing::Test {
protected:
    DisplayRow::Inputs inputs(const DisplayDevice& display, bool isEnabled = true) {
        return {display, isEnabled, "Must stay on", "At least one display must stay on",
                [this](bool isOn) { changes.push_back(isOn); }};
    }

    void open(const DisplayRow::Inputs& shown) {
        window.setPalette(theme::darkPalette());
        window.resize(464, 78);
        row = new DisplayRow(shown, &window);
        row->setGeometry(window.rect());
        showActive(window);
    }

    std::vector<QString> texts() const {
        std::vector<QString> result;
        for (const Label* each : row->findChildren<Label*>()) {
            if (each->isVisible()) {
                result.push_back(each->text());
            }
        }
        return result;
    }
    Label& text(int index) const { return *row->findChildren<Label*>().at(index); }
    Spinner& spinner() const { return *row->findChild<Spinner*>(); }

    QWidget window;
    DisplayRow* row = nullptr;
    std::vector<bool> changes;
};

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

TEST_F(DisplayRowTest, ABuiltInPanelThatIsOn) {
    open(inputs(builtInDisplay(true)));
    EXPECT_THAT(texts(),
                ElementsAre("MacBook Display", "Built-in panel · removed from desktop when off"));
    EXPECT_TRUE(row->powerSwitch()->isVisible());
    EXPECT_TRUE(row->powerSwitch()->isChecked());
    EXPECT_EQ(row->powerSwitch()->text(), "On");
    const QImage image = window.grab().toImage();
    EXPECT_GT(whitePixels(image, {16, 15, 48, 48}), 20);
    const QColor box = image.pixelColor(20, 39);
    EXPECT_GT(box.blue(), box.green() + 40);
}

TEST_F(DisplayRowTest, AnExternalMonitorThatIsOff) {
    open(inputs(externalDisplay(false)));
    EXPECT_THAT(texts(), ElementsAre("External Display",
                                     "External monitor · removed from desktop when off"));
    EXPECT_FALSE(row->powerSwitch()->isChecked());
    EXPECT_TRUE(row->powerSwitch()->isEnabled());
    EXPECT_EQ(row->powerSwitch()->text(), "Off");
    const QImage image = window.grab().toImage();
    EXPECT_EQ(whitePixels(image, {16, 15, 48, 48}), 0);
    const QColor box = image.pixelColor(20, 39);
    EXPECT_NEAR(box.blue(), image.pixelColor(8, 39).blue(), 16);
}

TEST_F(DisplayRowTest, TheKindsHaveDifferentIcons) {
    open(inputs(builtInDisplay(true, 1)));
    const QImage builtIn = window.grab({16, 15, 48, 48}).toImage();
    row->setInputs(inputs(externalDisplay(true, 1)));
    turn();
    EXPECT_NE(window.grab({16, 15, 48, 48}).toImage(), builtIn);
}

TEST_F(DisplayRowTest, ASwitchThatMayNotBeUsedIsDisabledAndSaysWhy) {
    open(inputs(builtInDisplay(true), false));
    EXPECT_FALSE(row->powerSwitch()->isEnabled());
    EXPECT_EQ(row->powerSwitch()->toolTip(), "At least one display must stay on");
    EXPECT_THAT(texts(),
                ElementsAre("MacBook Display", "Built-in panel · removed from desktop when off",
                            "Must stay on"));
    click(*row->powerSwitch());
    type(*row, Qt::Key_Space);
    EXPECT_TRUE(changes.empty());
}

TEST_F(DisplayRowTest, ASwitchThatMayBeUsedHasNoLock) {
    open(inputs(externalDisplay(true)));
    EXPECT_EQ(texts().size(), 2U);
    EXPECT_EQ(row->powerSwitch()->toolTip(), "Enable or disable External Display");
    EXPECT_EQ(row->powerSwitch()->accessibleName(), "External Display power");
}

TEST_F(DisplayRowTest, BusyShowsOnlyTheSpinnerWhateverIsEnabled) {
    open(inputs(busy(externalDisplay(true)), false));
    for (const bool isEnabled : {false, true}) {
        row->setInputs(inputs(busy(externalDisplay(true)), isEnabled));
        EXPECT_TRUE(spinner().isVisible());
        EXPECT_FALSE(row->powerSwitch()->isVisible());
        EXPECT_EQ(texts().size(), 2U);
    }
    row->setInputs(inputs(externalDisplay(true)));
    EXPECT_FALSE(spinner().isVisible());
    EXPECT_TRUE(row->powerSwitch()->isVisible());
}

TEST_F(DisplayRowTest, EachFlipIsHandedOnOnceWithTheNewPosition) {
    open(inputs(externalDisplay(true)));
    click(*row->powerSwitch());
    EXPECT_THAT(changes, ElementsAre(false));
    row->setInputs(inputs(externalDisplay(false)));
    click(*row->powerSwitch());
    EXPECT_THAT(changes, ElementsAre(false, true));
}

TEST_F(DisplayRowTest, AFlipThatChangesNothingShowsTheOldPositionAgain) {
    open(inputs(externalDisplay(true)));
    click(*row->powerSwitch());
    EXPECT_TRUE(row->powerSwitch()->isChecked());
    EXPECT_TRUE(waitFor([&] { return row->powerSwitch()->knobPosition() == 0; }));
    EXPECT_TRUE(waitFor([&] { return row->powerSwitch()->knobPosition() == 1; }));
    EXPECT_TRUE(waitFor([&] { return !row->powerSwitch()->isMoving(); }));
    EXPECT_EQ(row->powerSwitch()->knobPosition(), 1);
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

TEST_F(DisplayRowTest, IsLaidOutAsDesigned) {
    open(inputs(externalDisplay(true)));
    EXPECT_EQ(row->height(), 78);
    EXPECT_EQ(faceIn(*row->powerSwitch(), *row), QRect(464 - 16 - 46, 26, 46, 26));
    EXPECT_EQ(text(0).x(), 16 + 48 + 15);
    EXPECT_EQ(text(1).x(), 16 + 48 + 15);
    EXPECT_EQ(text(1).y(), text(0).geometry().bottom() + 1 + 4);
    const int above = text(0).y();
    const int below = 78 - (text(1).geometry().bottom() + 1);
    EXPECT_NEAR(above, below, 1);
}

TEST_F(DisplayRowTest, TheLockStandsThreeUnderTheSwitchFlushRight) {
    open(inputs(externalDisplay(true), false));
    const QRect face = faceIn(*row->powerSwitch(), *row);
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
    const std::string name(200, 'W');
    open(inputs(externalDisplay(true, 2, name)));
    EXPECT_EQ(text(0).text(), QString(200, u'W'));
    EXPECT_TRUE(text(0).visibleLines().first().endsWith(u'…'));
    EXPECT_LE(text(0).geometry().right() + 15, faceIn(*row->powerSwitch(), *row).left());
    EXPECT_EQ(row->height(), 78);
}

TEST_F(DisplayRowTest, ANameIsShownAsItIs) {
    open(inputs(externalDisplay(true, 2, "<b>Über</b> & Ω 显示器")));
    EXPECT_EQ(text(0).text(), "<b>Über</b> & Ω 显示器");
    EXPECT_EQ(text(0).visibleLines(), QStringList("<b>Über</b> & Ω 显示器"));
}

}  // namespace
}  // namespace tavrel
