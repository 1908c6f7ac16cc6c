#include <QAbstractEventDispatcher>

#include "tests/ui/ViewTest.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

QColor at(const QImage& image, const QPoint& point) {
    return image.pixelColor(point);
}

/// Whether anything in `widget` waits for time to pass.
bool hasTimers(const QWidget& widget) {
    auto* dispatcher = QAbstractEventDispatcher::instance();
    for (QObject* each : widget.findChildren<QObject*>()) {
        if (!dispatcher->registeredTimers(each).isEmpty()) {
            return true;
        }
    }
    return false;
}

TEST_F(ViewTest, NothingIsRepaintedWhileNothingChanges) {
    open({builtInDisplay(true), externalDisplay(false)});
    const PaintCounter paints(*view);
    turn();
    EXPECT_EQ(paints.count(), 0);
    EXPECT_FALSE(hasTimers(*view));
    EXPECT_FALSE(refreshButton().isMoving());
    EXPECT_FALSE(powerSwitch(0).isMoving());
}

TEST_F(ViewTest, ARebuildThatChangesNothingRepaintsNothing) {
    open({builtInDisplay(true), externalDisplay(false)});
    const PaintCounter paints(*view);
    bool isRebuilt = false;
    QObject::connect(view.get(), &DisplayControlView::rebuilt, [&] { isRebuilt = true; });
    controller->setDisplays(controller->displays());
    turn();
    EXPECT_TRUE(isRebuilt);
    EXPECT_EQ(paints.count(), 0);
}

TEST_F(ViewTest, ASpinnerRepaintsOnlyItsOwnPlace) {
    open({busy(builtInDisplay(true)), externalDisplay(true)});
    const Spinner* spinner = visible<Spinner>();
    ASSERT_NE(spinner, nullptr);
    const PaintCounter paints(*view);
    ASSERT_TRUE(waitFor([&] { return paints.count() > 0; }));
    EXPECT_TRUE(rectIn(*spinner, *view).contains(paints.region().boundingRect()));
}

TEST_F(ViewTest, WhatMovedComesToRestWhenTheWorkIsDone) {
    open({.name = {},
          .displays = {busy(builtInDisplay(true)), externalDisplay(true)},
          .status = "Ready",
          .error = {},
          .isRefreshing = true});
    EXPECT_TRUE(hasTimers(*view));
    show(*controller, {.name = {},
                       .displays = {builtInDisplay(true), externalDisplay(true)},
                       .status = "Ready",
                       .error = {}});
    turn();
    EXPECT_TRUE(waitFor([&] { return !refreshButton().isMoving(); }));
    EXPECT_EQ(refreshButton().angle(), 0);
    EXPECT_FALSE(hasTimers(*view));
    turn();
    const PaintCounter paints(*view);
    turn();
    EXPECT_EQ(paints.count(), 0);
}

TEST_F(ViewTest, AHiddenWindowRests) {
    open({.name = {},
          .displays = {busy(builtInDisplay(true))},
          .status = "Ready",
          .error = {},
          .isRefreshing = true});
    RefreshButton& refresh = refreshButton();
    Spinner& spinner = *visible<Spinner>();
    view->hide();
    EXPECT_FALSE(refresh.isMoving());
    EXPECT_FALSE(spinner.isSpinning());
    view->show();
    EXPECT_TRUE(refresh.isMoving());
    EXPECT_TRUE(spinner.isSpinning());
}

TEST_F(ViewTest, BackdropRunsFromCornerToCornerUnderTheGlow) {
    open({.name = {}, .displays = {}, .status = "Ready", .error = {}});
    const QImage image = picture();
    EXPECT_TRUE(isNear(at(image, {0, 0}), QColor(11, 15, 25)));
    EXPECT_TRUE(isNear(at(image, {519, 485}), QColor(22, 24, 38)));
    // The middle of the glow, 190 right of and 180 above the window's: 93 % of its colour.
    const QColor ground(17, 20, 32);
    const QColor glow = theme::withAlpha(theme::indigo, 0.18 * 0.93);
    EXPECT_TRUE(isNear(at(image, {260 + 190, 243 - 180}), over(ground, glow)));
}

TEST_F(ViewTest, RowsBoxesAndSwitchesHaveTheDesignedColours) {
    open({builtInDisplay(true), externalDisplay(false), externalDisplay(true, 3)});
    const QImage image = picture();
    const QColor ground = at(image, {20, 230});
    const QRect on = rectIn(row(0), *view);
    const QRect off = rectIn(row(1), *view);

    const QColor onRow = at(image, on.topLeft() + QPoint(8, 39));
    const QColor offRow = at(image, off.topLeft() + QPoint(8, 39));
    EXPECT_TRUE(isNear(offRow, over(ground, theme::white(0.06))));
    EXPECT_TRUE(isNear(at(image, off.topLeft() + QPoint(0, 39)), over(offRow, theme::white(0.09))));

    const QPoint besideIcon(16 + 4, 39);
    EXPECT_TRUE(isNear(at(image, on.topLeft() + besideIcon),
                       over(onRow, theme::withAlpha(QColor(94, 92, 230), 0.55))));
    EXPECT_TRUE(isNear(at(image, off.topLeft() + besideIcon), over(offRow, theme::white(0.055))));

    const QRect onSwitch = faceIn(powerSwitch(0), *view);
    const QRect offSwitch = faceIn(powerSwitch(1), *view);
    EXPECT_TRUE(isNear(at(image, onSwitch.topLeft() + QPoint(10, 13)), QColor(10, 132, 255)));
    EXPECT_TRUE(isNear(at(image, onSwitch.topLeft() + QPoint(33, 13)), Qt::white));
    EXPECT_TRUE(isNear(at(image, offSwitch.topLeft() + QPoint(13, 13)), Qt::white));
    const QColor besideSwitch = at(image, offSwitch.topLeft() + QPoint(-6, 13));
    EXPECT_TRUE(isNear(at(image, offSwitch.topLeft() + QPoint(35, 13)),
                       over(besideSwitch, theme::white(0.16))));
}

TEST_F(ViewTest, ADisabledSwitchIsAsAWholeAtHalfStrength) {
    open({builtInDisplay(true), externalDisplay(false)});
    const QImage image = picture();
    const QRect face = faceIn(powerSwitch(0), *view);
    const QColor ground = at(image, face.topLeft() + QPoint(-6, 13));
    EXPECT_TRUE(isNear(at(image, face.topLeft() + QPoint(10, 13)),
                       over(ground, theme::withAlpha(theme::blue, 0.5))));
    // The knob lets the row through, not the track.
    EXPECT_TRUE(
        isNear(at(image, face.topLeft() + QPoint(33, 13)), over(ground, theme::white(0.5)), 4));
}

TEST_F(ViewTest, TheDotIsOrangeWhileRefreshingAndGreenOtherwise) {
    open({builtInDisplay(true)});
    const QRect status = rectIn(*text("Ready"), *view);
    const QPoint dot(status.left() + 3, status.top() + 7);
    EXPECT_TRUE(isNear(at(picture(), dot), QColor(48, 209, 88)));
    controller->setIsRefreshing(true);
    turn();
    EXPECT_TRUE(isNear(at(picture(), dot), QColor(255, 159, 10)));
}

TEST_F(ViewTest, TextsHaveTheDesignedFontsAndColours) {
    open({.name = {},
          .displays = {builtInDisplay(true), externalDisplay(false)},
          .status = "Ready",
          .error = {}});
    const auto expectLook = [&](const QString& content, double size, QFont::Weight weight,
                                theme::FontDesign design, const QColor& color) {
        Label* label = text(content);
        ASSERT_NE(label, nullptr) << content.toStdString();
        EXPECT_EQ(label->fontSpec().size, size) << content.toStdString();
        EXPECT_EQ(label->fontSpec().weight, weight) << content.toStdString();
        EXPECT_EQ(label->fontSpec().design, design) << content.toStdString();
        EXPECT_EQ(label->color(), color) << content.toStdString();
    };
    using enum theme::FontDesign;
    expectLook("TAVREL", 11, QFont::DemiBold, rounded, theme::white(0.48));
    EXPECT_EQ(text("TAVREL")->fontSpec().tracking, 1.5);
    expectLook("Your screens", 27, QFont::Bold, rounded, theme::white());
    expectLook("MacBook Display", 15, QFont::DemiBold, rounded, theme::white());
    expectLook("Built-in panel · removed from desktop when off", 11.5, QFont::Normal, standard,
               theme::white(0.46));
    expectLook("Must stay on", 9.5, QFont::Medium, standard, theme::white(0.38));
    expectLook("Ready", 11.5, QFont::Medium, standard, theme::white(0.5));
    expectLook("⌃⌥⌘W", 11.5, QFont::DemiBold, monospaced, theme::white(0.48));

    controller->setErrorMessage("Broken");
    controller->setDisplays({});
    turn();
    expectLook("Broken", 11.5, QFont::Medium, standard,
               theme::withAlpha(QColor(255, 69, 58), 0.86));
    expectLook("Ready", 14, QFont::Medium, standard, theme::white(0.72));
    expectLook("⌃⌥⌘W", 11.5, QFont::DemiBold, monospaced, theme::white(0.24));
}

TEST_F(ViewTest, TheWakeButtonIsFilledAndAtHalfStrengthWhenDisabled) {
    open({builtInDisplay(true)});
    const QPoint inside = faceIn(wakeButton(), *view).center();
    const QPoint onEdge(inside.x(), faceIn(wakeButton(), *view).top());
    const QPoint outside = inside + QPoint(0, 34);
    QImage image = picture();
    EXPECT_TRUE(isNear(at(image, inside), over(at(image, outside), theme::white(0.08))));
    EXPECT_TRUE(isNear(at(image, onEdge), over(at(image, inside), theme::white(0.1))));
    controller->setDisplays({});
    turn();
    image = picture();
    EXPECT_TRUE(isNear(at(image, inside), over(at(image, outside), theme::white(0.04))));
}

TEST_F(ViewTest, StaysDarkUnderALightSystemPalette) {
    const QPalette before = QApplication::palette();
    QApplication::setPalette(QPalette(Qt::white));
    open({builtInDisplay(true)});
    EXPECT_LT(view->palette().color(QPalette::Window).lightness(), 64);
    EXPECT_TRUE(isNear(at(picture(), {0, 0}), QColor(11, 15, 25)));
    EXPECT_EQ(text("Your screens")->color(), QColor(Qt::white));
    QApplication::setPalette(before);
}

}  // namespace
}  // namespace tavrel
