#include <QScrollBar>

#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

class ViewLayoutTest : public ViewTest {};

TEST_F(ViewLayoutTest, TheWindowHasTheDesignedFixedSize) {
    open({builtInDisplay(true)});

    EXPECT_EQ(view->size(), QSize(520, 486));
    EXPECT_EQ(view->minimumSize(), view->maximumSize());
}

TEST_F(ViewLayoutTest, NothingIsInTheStripOfTheMenuBar) {
    open(manyDisplays(10));

    for (const QWidget* child : view->findChildren<QWidget*>()) {
        const auto* control = qobject_cast<const Control*>(child);
        const QRect seen = control != nullptr ? faceIn(*control, *view) : rectIn(*child, *view);
        if (child->isVisible() && !view->findChild<RowList*>()->isAncestorOf(child)) {
            EXPECT_GE(seen.top(), 28) << child->metaObject()->className();
        }
    }
}

TEST_F(ViewLayoutTest, TheColumnKeepsItsPaddingAndTheTitlesAreFiveApart) {
    open({builtInDisplay(true), externalDisplay(true)});

    const QRect title = rectIn(*text("TAVREL"), *view);
    EXPECT_EQ(title.topLeft(), QPoint(28, 28));
    EXPECT_EQ(rectIn(*text("Your screens"), *view).topLeft(), QPoint(28, title.bottom() + 1 + 5));
    EXPECT_EQ(faceIn(refreshButton(), *view), QRect(520 - 28 - 32, 28, 32, 32));
    EXPECT_EQ(faceIn(wakeButton(), *view), QRect(28, 486 - 28 - 42, 464, 42));
    EXPECT_EQ(rectIn(row(0), *view).left(), 28);
    EXPECT_EQ(row(0).width(), 464);
}

TEST_F(ViewLayoutTest, RowsAreSeventyEightHighAndTwelveApartInTheMiddleOfTheContent) {
    open(manyDisplays(3));

    const QRect first = rectIn(row(0), *view);
    const QRect last = rectIn(row(2), *view);
    EXPECT_EQ(first.height(), 78);
    EXPECT_EQ(rectIn(row(1), *view).top(), first.bottom() + 1 + 12);
    EXPECT_EQ(last.top(), first.bottom() + 1 + 12 + 78 + 12);
    const int above = first.top() - (rectIn(*text("Your screens"), *view).bottom() + 1);
    const int below = rectIn(*text("Ready"), *view).top() - (last.bottom() + 1);
    EXPECT_NEAR(above, below, 1);
}

TEST_F(ViewLayoutTest, TheStatusIsCentredTenAboveTheWakeButton) {
    open({builtInDisplay(true)});

    const QRect status = rectIn(*text("Ready"), *view);
    EXPECT_NEAR(status.center().x(), 260, 1);
    EXPECT_EQ(status.bottom() + 1, faceIn(wakeButton(), *view).top() - 10);
}

TEST_F(ViewLayoutTest, TheEmptyStateIsCentredWithTwelveBetweenSpinnerAndText) {
    open({.status = "Looking", .isRefreshing = true});

    const QRect spinner = rectIn(*visible<Spinner>(), *view);
    const QWidget& state = *visible<EmptyState>();
    Label* message = state.findChild<Label*>();
    const QRect line = rectIn(*message, *view);
    EXPECT_NEAR(spinner.center().x(), 260, 1);
    EXPECT_NEAR(line.center().x(), 260, 1);
    EXPECT_EQ(line.top(), spinner.bottom() + 1 + 12);
    const QRect all = rectIn(state, *view);
    EXPECT_NEAR(spinner.top() - all.top(), all.bottom() - line.bottom(), 1);
}

TEST_F(ViewLayoutTest, ThreeRowsNeedNoScrollBarEvenUnderALongError) {
    open(manyDisplays(3));

    setError(std::string(60, 'x') + " " + std::string(60, 'y'));

    EXPECT_FALSE(visible<RowList>()->verticalScrollBar()->isVisible());
    for (const DisplayRow* each : rows()) {
        EXPECT_EQ(each->visibleRegion().boundingRect(), each->rect());
    }
}

TEST_F(ViewLayoutTest, FourRowsTakeAsMuchOfThePaddingAboveAsBelowAndNeedNoScrolling) {
    open(manyDisplays(4));

    EXPECT_FALSE(visible<RowList>()->verticalScrollBar()->isVisible());
    for (const DisplayRow* each : rows()) {
        EXPECT_EQ(each->visibleRegion().boundingRect(), each->rect());
    }
    const int above = rectIn(*text("TAVREL"), *view).top();
    const int below = view->height() - (faceIn(wakeButton(), *view).bottom() + 1);
    EXPECT_NEAR(above, below, 1);
    EXPECT_LT(above, 28);
    EXPECT_GE(rectIn(row(0), *view).top(), rectIn(*text("Your screens"), *view).bottom() + 1);
    EXPECT_LE(rectIn(row(3), *view).bottom(), rectIn(*text("Ready"), *view).top() - 1);
}

TEST_F(ViewLayoutTest, ARowThatJustFitsShowsNoScrollBarWhenItComesAlsoNotForAMoment) {
    open(manyDisplays(3));
    const EventCounter shows(*visible<RowList>()->verticalScrollBar(), QEvent::Show);

    setDisplays(manyDisplays(4));

    EXPECT_EQ(shows.count(), 0);
    EXPECT_EQ(row(3).visibleRegion().boundingRect(), row(3).rect());
}

TEST_F(ViewLayoutTest, FourRowsNeedNoScrollingUnderALongErrorEither) {
    open(manyDisplays(4));

    setError(std::string(60, 'x') + " " + std::string(60, 'y'));

    EXPECT_FALSE(visible<RowList>()->verticalScrollBar()->isVisible());
    EXPECT_GE(rectIn(*text("TAVREL"), *view).top(), 0);
}

TEST_F(ViewLayoutTest, TheStripForMenusIsBesideTheTitleWhereFourRowsPushItUp) {
    open(manyDisplays(3));
    EXPECT_EQ(view->menuStrip(), QRect(0, 0, 520, 28));

    open(manyDisplays(4));

    const QRect strip = view->menuStrip();
    EXPECT_EQ(strip.height(), 28);
    EXPECT_GT(strip.left(), 28 + text("TAVREL")->sizeHint().width() - 1);
    EXPECT_LT(strip.right(), faceIn(refreshButton(), *view).left());
    EXPECT_LT(strip.bottom(), rectIn(*text("Your screens"), *view).top() + 5);
    EXPECT_NEAR(strip.center().y(), rectIn(*text("TAVREL"), *view).center().y(), 1);
}

TEST_F(ViewLayoutTest, MoreRowsThanFitScrollAndKeepTheirWidth) {
    open(manyDisplays(10));

    RowList& list = *visible<RowList>();
    ASSERT_EQ(rows().size(), 10U);
    EXPECT_TRUE(list.verticalScrollBar()->isVisible());
    EXPECT_EQ(rectIn(row(0), *view).left(), 28);
    EXPECT_EQ(row(0).width(), 464);
    EXPECT_TRUE(row(9).visibleRegion().isEmpty());
    // Beside the rows, not on them.
    EXPECT_GT(rectIn(*list.verticalScrollBar(), *view).left(), rectIn(row(0), *view).right());

    list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum());
    turn();
    EXPECT_EQ(row(9).visibleRegion().boundingRect(), row(9).rect());
}

TEST_F(ViewLayoutTest, RowsNeverReachIntoHeaderOrFooter) {
    open(manyDisplays(10));

    const QRect list = rectIn(*visible<RowList>(), *view);
    EXPECT_GT(list.top(), rectIn(*text("Your screens"), *view).bottom());
    EXPECT_LT(list.bottom(), rectIn(*text("Ready"), *view).top());
}

TEST_F(ViewLayoutTest, TheKeyboardScrollsARowIntoView) {
    open(manyDisplays(10));
    refreshButton().setFocus(Qt::TabFocusReason);

    for (int tabs = 0; tabs < 10; ++tabs) {
        type(*view, Qt::Key_Tab);
        DisplayRow& reached = row(static_cast<std::size_t>(tabs));
        EXPECT_EQ(focused(), reached.powerSwitch());
        EXPECT_EQ(reached.visibleRegion().boundingRect(), reached.rect()) << tabs;
    }
}

TEST_F(ViewLayoutTest, AClickNeverScrollsAwayWhatItHits) {
    open(manyDisplays(10));
    RowList& list = *visible<RowList>();
    // The fourth row's switch can be seen, its lower edge cannot.
    list.verticalScrollBar()->setValue(45);
    turn();
    ASSERT_NE(row(3).visibleRegion().boundingRect(), row(3).rect());
    system.windowServer.connect({.id = 1});

    click(powerSwitch(3));

    EXPECT_EQ(list.verticalScrollBar()->value(), 45);
    EXPECT_TRUE(controller->displays().at(3).isBusy);
}

}  // namespace
}  // namespace tavrel
