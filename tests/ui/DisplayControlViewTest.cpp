#include <QScrollBar>

#include "tests/ui/ViewTest.h"
#include "ui/Texts.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::Pair;

TEST_F(ViewTest, HeaderShowsTheProductTheHeadingAndTheRefreshButton) {
    open({builtInDisplay(true)});
    EXPECT_NE(text("TAVREL"), nullptr);
    EXPECT_NE(text("Your screens"), nullptr);
    EXPECT_EQ(refreshButton().toolTip(), "Refresh displays");
}

TEST_F(ViewTest, NothingIsDoneWhenTheViewIsFirstShown) {
    open({builtInDisplay(true)});
    EXPECT_FALSE(controller->isRefreshing());
    EXPECT_TRUE(system.windowServer.takeChanges().empty());
}

TEST_F(ViewTest, WithoutDisplaysAndRefreshTheStatusStandsInTheMiddleAndInTheFooter) {
    open({.name = {}, .displays = {}, .status = "Found 0 displays", .error = {}});
    EXPECT_THAT(texts(), ElementsAre("TAVREL", "Your screens", "Found 0 displays",
                                     "Found 0 displays", "⌃⌥⌘W"));
    EXPECT_EQ(visible<Spinner>(), nullptr);
    EXPECT_EQ(visible<RowList>(), nullptr);
    EXPECT_FALSE(wakeButton().isEnabled());
    EXPECT_TRUE(refreshButton().isEnabled());
    EXPECT_FALSE(refreshButton().isMoving());
}

TEST_F(ViewTest, WithoutDisplaysWhileRefreshingASpinnerStandsInTheMiddle) {
    open({.name = {},
          .displays = {},
          .status = "Finding your displays…",
          .error = {},
          .isRefreshing = true});
    ASSERT_NE(visible<Spinner>(), nullptr);
    EXPECT_TRUE(visible<Spinner>()->isSpinning());
    EXPECT_FALSE(refreshButton().isEnabled());
    EXPECT_TRUE(refreshButton().isMoving());
    EXPECT_FALSE(wakeButton().isEnabled());
}

TEST_F(ViewTest, EachDisplayHasItsRowInListOrder) {
    open({builtInDisplay(true), externalDisplay(false, 7, "External Display 1"),
          externalDisplay(true, 9, "External Display 2")});
    ASSERT_EQ(rows().size(), 3U);
    EXPECT_THAT(texts(row(0)),
                ElementsAre("MacBook Display", "Built-in panel · removed from desktop when off"));
    EXPECT_THAT(texts(row(1)), ElementsAre("External Display 1",
                                           "External monitor · removed from desktop when off"));
    EXPECT_THAT(texts(row(2)), ElementsAre("External Display 2",
                                           "External monitor · removed from desktop when off"));
    EXPECT_LT(rectIn(row(0), *view).bottom(), rectIn(row(1), *view).top());
    EXPECT_LT(rectIn(row(1), *view).bottom(), rectIn(row(2), *view).top());
}

TEST_F(ViewTest, WithTwoDisplaysOnBothSwitchesAreEnabled) {
    open({builtInDisplay(true), externalDisplay(true)});
    EXPECT_TRUE(powerSwitch(0).isEnabled());
    EXPECT_TRUE(powerSwitch(1).isEnabled());
    EXPECT_EQ(text("Must stay on"), nullptr);
}

TEST_F(ViewTest, TheOnlyDisplayThatIsOnMustStayOn) {
    open({builtInDisplay(true), externalDisplay(false)});
    EXPECT_FALSE(powerSwitch(0).isEnabled());
    EXPECT_EQ(powerSwitch(0).toolTip(), "At least one display must stay on");
    EXPECT_THAT(texts(row(0)), Contains(QString("Must stay on")));
    EXPECT_TRUE(powerSwitch(1).isEnabled());
    EXPECT_EQ(powerSwitch(1).toolTip(), "Enable or disable External Display");
    EXPECT_THAT(texts(row(1)), Not(Contains(QString("Must stay on"))));
}

TEST_F(ViewTest, ASingleDisplayMustStayOn) {
    open({builtInDisplay(true)});
    EXPECT_FALSE(powerSwitch(0).isEnabled());
}

TEST_F(ViewTest, DisplaysThatAreOffCanAlwaysBeSwitchedOn) {
    open({builtInDisplay(false), externalDisplay(false)});
    EXPECT_TRUE(powerSwitch(0).isEnabled());
    EXPECT_TRUE(powerSwitch(1).isEnabled());
}

TEST_F(ViewTest, ABusyDisplayThatIsOnCountsAsOn) {
    open({builtInDisplay(true), busy(externalDisplay(true))});
    EXPECT_TRUE(powerSwitch(0).isEnabled());
}

TEST_F(ViewTest, AnErrorTakesThePlaceOfTheStatus) {
    open({.name = {},
          .displays = {builtInDisplay(true)},
          .status = "Couldn’t change MacBook Display",
          .error = "It did not work"});
    EXPECT_NE(text("It did not work"), nullptr);
    EXPECT_EQ(text("Couldn’t change MacBook Display"), nullptr);

    controller->setErrorMessage(std::nullopt);
    turn();
    EXPECT_EQ(text("It did not work"), nullptr);
    EXPECT_NE(text("Couldn’t change MacBook Display"), nullptr);
}

TEST_F(ViewTest, AnEmptyErrorStillHidesTheStatus) {
    open({.name = {}, .displays = {builtInDisplay(true)}, .status = "Ready", .error = ""});
    EXPECT_EQ(text("Ready"), nullptr);
}

TEST_F(ViewTest, ALongErrorHasTwoLinesAndNeverChangesTheWindow) {
    open({builtInDisplay(true), externalDisplay(true)});
    const QRect wake = faceIn(wakeButton(), *view);
    std::string endless = "Couldn’t wake: ";
    for (int i = 0; i < 100; ++i) {
        endless += "External Display " + std::to_string(i) + ", ";
    }
    controller->setErrorMessage(endless);
    turn();

    Label* error = text(QString::fromStdString(endless));
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->visibleLines().size(), 2);
    EXPECT_TRUE(error->visibleLines().last().endsWith(u'…'));
    EXPECT_EQ(view->size(), QSize(520, 486));
    EXPECT_EQ(faceIn(wakeButton(), *view), wake);
    EXPECT_EQ(error->geometry().bottom() + 1, wake.top() - 10);
}

TEST_F(ViewTest, ALongStatusStaysOnOneLineWithinTheColumn) {
    open({builtInDisplay(true)});
    controller->setStatusMessage(std::string(500, 'm'));
    turn();
    Label* status = text(QString(500, u'm'));
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(rectIn(*status, *view).left(), 28);
    EXPECT_EQ(rectIn(*status, *view).right() + 1, 520 - 28);
    EXPECT_TRUE(status->visibleLines().first().endsWith(u'…'));
}

TEST_F(ViewTest, DuringARefreshTheRowsAndTheWakeButtonStay) {
    open({.name = {},
          .displays = {builtInDisplay(true), externalDisplay(true)},
          .status = "Ready",
          .error = {},
          .isRefreshing = true});
    EXPECT_TRUE(wakeButton().isEnabled());
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_TRUE(row(0).isVisible());
    EXPECT_FALSE(refreshButton().isEnabled());
}

TEST_F(ViewTest, TheRefreshButtonRefreshes) {
    openOnDesk({{.id = 5, .builtIn = true}});
    system.windowServer.connect({.id = 6});
    controller->setStatusMessage("Something else");
    click(refreshButton());
    EXPECT_TRUE(controller->isRefreshing());
    settle();
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_NE(text("Both displays are ready"), nullptr);
    EXPECT_FALSE(controller->isRefreshing());
}

TEST_F(ViewTest, TheWakeButtonWakesAll) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6, .enabled = false}});
    click(wakeButton());
    EXPECT_TRUE(controller->displays().at(0).isBusy);
    settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(5U, true), Pair(6U, true)));
    EXPECT_NE(text("Both displays are on"), nullptr);
    EXPECT_TRUE(powerSwitch(1).isChecked());
}

TEST_F(ViewTest, ASwitchTakesItsOwnDisplayOffAndBringsItBack) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    click(powerSwitch(1));
    turn();
    EXPECT_FALSE(powerSwitch(1).isVisible());
    EXPECT_NE(text("Turning off External Display…"), nullptr);
    settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(6U, false)));
    EXPECT_TRUE(powerSwitch(1).isVisible());
    EXPECT_FALSE(powerSwitch(1).isChecked());
    EXPECT_NE(text("External Display is off"), nullptr);
    EXPECT_FALSE(powerSwitch(0).isEnabled());

    click(powerSwitch(1));
    settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(6U, true)));
    EXPECT_TRUE(powerSwitch(1).isChecked());
    EXPECT_NE(text("External Display is on"), nullptr);
}

TEST_F(ViewTest, ASwitchThatTheControllerRefusesGoesBack) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    SimulatedDisplay panel = *system.windowServer.find(5);
    panel.enabled = false;
    system.windowServer.replaceSilently(panel);

    click(powerSwitch(1));
    EXPECT_TRUE(waitFor([&] { return powerSwitch(1).knobPosition() < 0.5; }));
    EXPECT_TRUE(waitFor([&] { return powerSwitch(1).knobPosition() == 1; }));
    EXPECT_TRUE(powerSwitch(1).isChecked());
    EXPECT_TRUE(system.windowServer.takeChanges().empty());
    EXPECT_NE(text("Keep at least one display enabled so you can turn the other one back on."),
              nullptr);
}

TEST_F(ViewTest, ASwitchThatFailsShowsItsOldPosition) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    lifecycle.refuse(6, serverStatus::illegalArgument);
    click(powerSwitch(1));
    settle();
    EXPECT_TRUE(powerSwitch(1).isVisible());
    EXPECT_TRUE(powerSwitch(1).isChecked());
    EXPECT_EQ(powerSwitch(1).knobPosition(), 1);
    EXPECT_NE(text(QString::fromStdString(controller->errorMessage().value())), nullptr);
}

TEST_F(ViewTest, IsRebuiltOnceInATurnHoweverManyFieldsChange) {
    open({builtInDisplay(true)});
    int rebuilds = 0;
    QObject::connect(view.get(), &DisplayControlView::rebuilt, [&] { ++rebuilds; });
    show(*controller, {.name = {},
                       .displays = {builtInDisplay(false), externalDisplay(true)},
                       .status = "Changed",
                       .error = {},
                       .isRefreshing = true});
    EXPECT_EQ(rebuilds, 0);
    turn();
    EXPECT_EQ(rebuilds, 1);
    EXPECT_NE(text("Changed"), nullptr);

    controller->setStatusMessage("Changed again");
    turn();
    EXPECT_EQ(rebuilds, 2);
}

TEST_F(ViewTest, ARowStaysTheSameWhileItsDisplayIsListed) {
    open({builtInDisplay(true), externalDisplay(true, 2), externalDisplay(true, 3, "Third")});
    DisplayRow* first = &row(0);
    DisplayRow* third = &row(2);
    controller->setDisplays({externalDisplay(false, 3, "Renamed"), builtInDisplay(true)});
    turn();
    ASSERT_EQ(rows().size(), 2U);
    EXPECT_EQ(&row(0), third);
    EXPECT_EQ(&row(1), first);
    EXPECT_THAT(texts(row(0)), Contains(QString("Renamed")));
    EXPECT_LT(rectIn(row(0), *view).bottom(), rectIn(row(1), *view).top());
    EXPECT_EQ(view->findChildren<DisplayRow*>().size(), 2);
}

TEST_F(ViewTest, TheViewMayOutliveEveryOtherOwnerOfTheController) {
    open({builtInDisplay(true), externalDisplay(true)});
    controller->setStatusMessage("Last words");
    controller.reset();
    turn();
    EXPECT_NE(text("Last words"), nullptr);
}

TEST_F(ViewTest, AChangeAfterTheViewHasGoneIsHarmless) {
    open({builtInDisplay(true)});
    view.reset();
    controller->setStatusMessage("Nobody listens");
    turn();
    EXPECT_EQ(controller->statusMessage(), "Nobody listens");
}

}  // namespace
}  // namespace tavrel
