#include <QAbstractEventDispatcher>
#include <algorithm>

#include "tests/ui/ViewTest.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

class ViewPaintTest : public ViewTest {
protected:
    /// Whether anything in the window waits for time to pass.
    bool hasTimers() const {
        auto* dispatcher = QAbstractEventDispatcher::instance();
        const QList<QObject*> all = view->findChildren<QObject*>();
        return std::any_of(all.begin(), all.end(), [dispatcher](QObject* each) {
            return !dispatcher->registeredTimers(each).isEmpty();
        });
    }

    /// The colour at `point` in the picture last taken.
    QColor at(const QPoint& point) const { return image.pixelColor(point); }
    void takePicture() { image = picture(); }

    QImage image;
};

TEST_F(ViewPaintTest, AnErrorIsWrittenInTheMiddle) {
    open({builtInDisplay(true)});
    takePicture();
    const QImage before = image;

    setError("No");
    takePicture();

    QRect written;
    for (int y = rectIn(*text("No"), *view).top(); y < faceIn(wakeButton(), *view).top(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (at({x, y}).red() > before.pixelColor(x, y).red() + 60 &&
                at({x, y}).red() > at({x, y}).green() + 60) {
                written |= QRect(x, y, 1, 1);
            }
        }
    }
    EXPECT_GT(written.width(), 5);
    EXPECT_LT(written.width(), 40);
    EXPECT_NEAR(written.center().x(), 260, 2);
}

TEST_F(ViewPaintTest, NothingIsRepaintedWhileNothingChanges) {
    open({builtInDisplay(true), externalDisplay(false)});
    const PaintCounter paints(*view);

    turn();

    EXPECT_EQ(paints.count(), 0);
    EXPECT_FALSE(hasTimers());
    EXPECT_FALSE(refreshButton().isMoving());
    EXPECT_FALSE(powerSwitch(0).isMoving());
}

TEST_F(ViewPaintTest, ARebuildThatChangesNothingRepaintsNothing) {
    open({builtInDisplay(true), externalDisplay(false)});
    const PaintCounter paints(*view);
    bool isRebuilt = false;
    QObject::connect(view.get(), &DisplayControlView::rebuilt, [&] { isRebuilt = true; });

    setDisplays(controller->displays());

    EXPECT_TRUE(isRebuilt);
    EXPECT_EQ(paints.count(), 0);
}

TEST_F(ViewPaintTest, WhatChangesInOneRowRepaintsNoOther) {
    auto displays = manyDisplays(3);
    open(displays);
    const PaintCounter first(row(0));
    const PaintCounter last(row(2));

    displays[0].isOn = false;
    setDisplays(displays);

    EXPECT_TRUE(runUntil([&] { return first.count() > 0; }));
    EXPECT_EQ(last.count(), 0);
}

TEST_F(ViewPaintTest, ASpinnerRepaintsOnlyItsOwnPlace) {
    open({busy(builtInDisplay(true)), externalDisplay(true)});
    const QRect spinner = rectIn(*visible<Spinner>(), *view);
    const PaintCounter paints(*view);

    ASSERT_TRUE(runUntil([&] { return paints.count() > 0; }));

    EXPECT_TRUE(spinner.contains(paints.region().boundingRect()));
}

TEST_F(ViewPaintTest, TheIconOfTheEmptyStateGoesWhenARefreshStartsAndComesBackAfterIt) {
    open(Situation{});
    const QRect line = rectIn(*visible<EmptyState>()->findChild<Label*>(), *view);
    // Larger than the spinner that takes its place.
    const QRect icon(260 - 18, line.top() - 12 - 36, 36, 36);

    for (const bool isRefreshing : {true, false}) {
        const PaintCounter paints(*view);
        controller->setIsRefreshing(isRefreshing);
        EXPECT_TRUE(runUntil([&] { return paints.covers(icon); })) << isRefreshing;
    }
}

TEST_F(ViewPaintTest, WhatMovedStandsStillWhenTheWorkIsDone) {
    open({.displays = {busy(builtInDisplay(true)), externalDisplay(true)}, .isRefreshing = true});
    EXPECT_TRUE(hasTimers());
    clock.pass(200);
    EXPECT_NE(refreshButton().angle(), 0);

    show(*controller, {.displays = {builtInDisplay(true), externalDisplay(true)}});
    clock.pass(500);

    EXPECT_FALSE(refreshButton().isMoving());
    EXPECT_EQ(refreshButton().angle(), 0);
    EXPECT_FALSE(hasTimers());
    turn();
    const PaintCounter paints(*view);
    turn();
    EXPECT_EQ(paints.count(), 0);
}

TEST_F(ViewPaintTest, NothingMovesInAHiddenWindow) {
    open({.displays = {busy(builtInDisplay(true))}, .isRefreshing = true});
    RefreshButton& refresh = refreshButton();
    Spinner& spinner = *visible<Spinner>();

    view->hide();
    EXPECT_FALSE(refresh.isMoving());
    EXPECT_FALSE(spinner.isSpinning());

    view->show();
    EXPECT_TRUE(refresh.isMoving());
    EXPECT_TRUE(spinner.isSpinning());
}

TEST_F(ViewPaintTest, TheBackdropRunsFromCornerToCornerUnderTheGlow) {
    open(Situation{});
    takePicture();

    EXPECT_TRUE(isNear(at({0, 0}), QColor(11, 15, 25)));
    EXPECT_TRUE(isNear(at({519, 485}), QColor(22, 24, 38)));
    // The middle of the glow, 190 right of and 180 above the window's: 93 % of its colour.
    const QColor ground(17, 20, 32);
    const QColor glow = theme::withAlpha(theme::indigo, 0.18 * 0.93);
    EXPECT_TRUE(isNear(at({260 + 190, 243 - 180}), over(ground, glow)));
}

TEST_F(ViewPaintTest, RowsAndTheirIconBoxesHaveTheDesignedColours) {
    open({builtInDisplay(true), externalDisplay(false), externalDisplay(true, 3)});
    takePicture();

    const QPoint onRow = rectIn(row(0), *view).topLeft();
    const QPoint offRow = rectIn(row(1), *view).topLeft();
    const QColor onFill = at(onRow + QPoint(8, 39));
    const QColor offFill = at(offRow + QPoint(8, 39));
    EXPECT_TRUE(isNear(offFill, over(at({20, 230}), theme::white(0.06))));
    // The outline lies on the edge, so each side of it has half of its strength.
    const QColor beside = at(offRow + QPoint(-3, 39));
    EXPECT_TRUE(isNear(at(offRow + QPoint(0, 39)), over(offFill, theme::white(0.045)), 1));
    EXPECT_TRUE(isNear(at(offRow + QPoint(-1, 39)), over(beside, theme::white(0.045)), 1));

    const QPoint besideIcon(16 + 4, 39);
    EXPECT_TRUE(
        isNear(at(onRow + besideIcon), over(onFill, theme::withAlpha(QColor(94, 92, 230), 0.55))));
    EXPECT_TRUE(isNear(at(offRow + besideIcon), over(offFill, theme::white(0.055))));
}

TEST_F(ViewPaintTest, SwitchesHaveTheDesignedColours) {
    open({builtInDisplay(true), externalDisplay(false), externalDisplay(true, 3)});
    takePicture();

    const QPoint on = faceIn(powerSwitch(0), *view).topLeft();
    EXPECT_TRUE(isNear(at(on + QPoint(10, 13)), QColor(10, 132, 255)));
    EXPECT_TRUE(isNear(at(on + QPoint(33, 13)), Qt::white));

    const QPoint off = faceIn(powerSwitch(1), *view).topLeft();
    const QColor ground = at(off + QPoint(-6, 13));
    EXPECT_TRUE(isNear(at(off + QPoint(13, 13)), Qt::white));
    EXPECT_TRUE(isNear(at(off + QPoint(35, 13)), over(ground, theme::white(0.16))));
}

TEST_F(ViewPaintTest, ADisabledSwitchIsAsAWholeAtHalfStrength) {
    open({builtInDisplay(true), externalDisplay(false)});
    takePicture();

    const QPoint face = faceIn(powerSwitch(0), *view).topLeft();
    const QColor ground = at(face + QPoint(-6, 13));
    EXPECT_TRUE(
        isNear(at(face + QPoint(10, 13)), over(ground, theme::withAlpha(theme::blue, 0.5))));
    // The knob lets the row through, not the track.
    EXPECT_TRUE(isNear(at(face + QPoint(33, 13)), over(ground, theme::white(0.5)), 4));
}

TEST_F(ViewPaintTest, TheDotIsOrangeWhileRefreshingAndGreenOtherwise) {
    open({builtInDisplay(true)});
    const QPoint dot = rectIn(*text("Ready"), *view).topLeft() + QPoint(3, 7);

    takePicture();
    EXPECT_TRUE(isNear(at(dot), QColor(48, 209, 88)));

    controller->setIsRefreshing(true);
    turn();
    takePicture();
    EXPECT_TRUE(isNear(at(dot), QColor(255, 159, 10)));
}

TEST_F(ViewPaintTest, TextsHaveTheDesignedFontsAndColours) {
    const auto expectLook = [&](const QString& content, double size, QFont::Weight weight,
                                theme::FontDesign design, const QColor& color) {
        SCOPED_TRACE(content.toStdString());
        Label* label = text(content);
        ASSERT_NE(label, nullptr);
        EXPECT_EQ(label->fontSpec().size, size);
        EXPECT_EQ(label->fontSpec().weight, weight);
        EXPECT_EQ(label->fontSpec().design, design);
        EXPECT_EQ(label->color(), color);
    };
    using enum theme::FontDesign;

    open({builtInDisplay(true), externalDisplay(false)});
    expectLook("TAVREL", 11, QFont::DemiBold, rounded, theme::white(0.48));
    EXPECT_EQ(text("TAVREL")->fontSpec().tracking, 1.5);
    expectLook("Your screens", 27, QFont::Bold, rounded, theme::white());
    expectLook("MacBook Display", 15, QFont::DemiBold, rounded, theme::white());
    expectLook("Built-in panel · removed from desktop when off", 11.5, QFont::Normal, standard,
               theme::white(0.46));
    expectLook("Must stay on", 9.5, QFont::Medium, standard, theme::white(0.38));
    expectLook("Ready", 11.5, QFont::Medium, standard, theme::white(0.5));
    expectLook("⌃⌥⌘W", 11.5, QFont::DemiBold, monospaced, theme::white(0.48));

    setError("Broken");
    setDisplays({});
    expectLook("Broken", 11.5, QFont::Medium, standard,
               theme::withAlpha(QColor(255, 69, 58), 0.86));
    expectLook("Ready", 14, QFont::Medium, standard, theme::white(0.72));
    expectLook("⌃⌥⌘W", 11.5, QFont::DemiBold, monospaced, theme::white(0.24));
}

TEST_F(ViewPaintTest, AHotKeyThatDoesNotWorkIsAtHalfStrengthAndExplained) {
    open({builtInDisplay(true)});
    EXPECT_EQ(wakeButton().toolTip(), "");

    view->setWakeShortcut({.works = false});
    EXPECT_EQ(text("⌃⌥⌘W")->color(), theme::white(0.24));
    EXPECT_THAT(wakeButton().toolTip().toStdString(), testing::StartsWith("⌃⌥⌘W doesn’t work"));
    EXPECT_TRUE(wakeButton().isEnabled());

    setDisplays({});
    EXPECT_EQ(text("⌃⌥⌘W")->color(), theme::white(0.24)) << "not weaker for being disabled too";

    setDisplays({builtInDisplay(true)});
    view->setWakeShortcut({.works = true});
    EXPECT_EQ(text("⌃⌥⌘W")->color(), theme::white(0.48));
    EXPECT_EQ(wakeButton().toolTip(), "");
}

TEST_F(ViewPaintTest, WhatTheDesktopHasBoundInsteadIsTheHintAndNothingBoundIsExplained) {
    open({builtInDisplay(true)});

    view->setWakeShortcut({.works = true, .keys = "Super+F9", .desktopDecides = true});
    EXPECT_EQ(text("Super+F9")->color(), theme::white(0.48));
    EXPECT_EQ(text("Super+F9")->visibleLines(), QStringList("Super+F9"));
    EXPECT_EQ(wakeButton().toolTip(), "");

    view->setWakeShortcut({.works = false, .desktopDecides = true});
    EXPECT_EQ(text("⌃⌥⌘W")->color(), theme::white(0.24));
    EXPECT_THAT(wakeButton().toolTip().toStdString(),
                testing::EndsWith("gapplication action io.github.tavrel.Tavrel wake"));
}

TEST_F(ViewPaintTest, AHotKeyOfManyWordsLeavesTheWakeButtonsLabelAlone) {
    open({builtInDisplay(true)});
    const QString words = QString("Press ").repeated(40);

    view->setWakeShortcut({.works = true, .keys = words, .desktopDecides = true});

    EXPECT_LE(text(words)->width(), wakeButton().width() / 2);
}

TEST_F(ViewPaintTest, TheWakeButtonIsFilledAndAtHalfStrengthWhenDisabled) {
    open({builtInDisplay(true)});
    const QPoint inside = faceIn(wakeButton(), *view).center();
    const QPoint onEdge(inside.x(), faceIn(wakeButton(), *view).top());
    const QPoint outside = inside + QPoint(0, 34);

    takePicture();
    EXPECT_TRUE(isNear(at(inside), over(at(outside), theme::white(0.08))));
    EXPECT_TRUE(isNear(at(onEdge), over(at(inside), theme::white(0.05)), 1));
    EXPECT_TRUE(isNear(at(onEdge - QPoint(0, 1)), over(at(outside), theme::white(0.05)), 1));

    setDisplays({});
    takePicture();
    EXPECT_TRUE(isNear(at(inside), over(at(outside), theme::white(0.04))));
}

TEST_F(ViewPaintTest, TheWindowStaysDarkUnderALightSystemPalette) {
    const QPalette before = QApplication::palette();
    QApplication::setPalette(QPalette(Qt::white));

    open({builtInDisplay(true)});
    takePicture();

    EXPECT_LT(view->palette().color(QPalette::Window).lightness(), 64);
    EXPECT_TRUE(isNear(at({0, 0}), QColor(11, 15, 25)));
    EXPECT_EQ(text("Your screens")->color(), QColor(Qt::white));
    QApplication::setPalette(before);
}

}  // namespace
}  // namespace tavrel
