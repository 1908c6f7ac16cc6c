#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::Pair;

class DisplayControlViewTest : public ViewTest {};

TEST_F(DisplayControlViewTest, AsksNothingOfTheControllerWhenItIsFirstShown) {
    open({builtInDisplay(true)});

    EXPECT_FALSE(controller->isRefreshing());
    EXPECT_TRUE(system.windowServer.takeChanges().empty());
}

TEST_F(DisplayControlViewTest, WithoutDisplaysTheStatusIsShownInTheMiddleAndInTheFooter) {
    open({.status = "Found 0 displays"});

    EXPECT_THAT(visibleTexts(*view), ElementsAre("TAVREL", "Your screens", "Found 0 displays",
                                                 "Found 0 displays", "⌃⌥⌘W"));
    EXPECT_EQ(visible<Spinner>(), nullptr);
    EXPECT_EQ(visible<RowList>(), nullptr);
    EXPECT_FALSE(wakeButton().isEnabled());
    EXPECT_TRUE(refreshButton().isEnabled());
    EXPECT_FALSE(refreshButton().isMoving());
}

TEST_F(DisplayControlViewTest, WithoutDisplaysASpinnerIsShownDuringARefresh) {
    open({.status = "Finding your displays…", .isRefreshing = true});

    ASSERT_NE(visible<Spinner>(), nullptr);
    EXPECT_TRUE(visible<Spinner>()->isSpinning());
    EXPECT_FALSE(refreshButton().isEnabled());
    EXPECT_TRUE(refreshButton().isMoving());
    EXPECT_FALSE(wakeButton().isEnabled());
}

TEST_F(DisplayControlViewTest, EachDisplayHasItsRowInListOrder) {
    open({builtInDisplay(true), externalDisplay(false, 7, "External Display 1"),
          externalDisplay(true, 9, "External Display 2")});

    ASSERT_EQ(rows().size(), 3U);
    EXPECT_THAT(visibleTexts(row(0)), Contains(QString("MacBook Display")));
    EXPECT_THAT(visibleTexts(row(1)), Contains(QString("External Display 1")));
    EXPECT_THAT(visibleTexts(row(2)), Contains(QString("External Display 2")));
    EXPECT_LT(rectIn(row(0), *view).bottom(), rectIn(row(1), *view).top());
    EXPECT_LT(rectIn(row(1), *view).bottom(), rectIn(row(2), *view).top());
}

TEST_F(DisplayControlViewTest, OnlyTheSwitchOfTheLastDisplayThatIsOnIsDisabled) {
    const auto enabled = [this](const std::vector<DisplayDevice>& displays) {
        open(displays);
        std::vector<bool> result;
        for (const DisplayRow* each : rows()) {
            result.push_back(each->powerSwitch()->isEnabled());
        }
        return result;
    };

    EXPECT_THAT(enabled({builtInDisplay(true), externalDisplay(true)}), ElementsAre(true, true));
    EXPECT_THAT(enabled({builtInDisplay(true), externalDisplay(false)}), ElementsAre(false, true));
    EXPECT_THAT(enabled({builtInDisplay(true)}), ElementsAre(false));
    EXPECT_THAT(enabled({builtInDisplay(false), externalDisplay(false)}), ElementsAre(true, true));
}

TEST_F(DisplayControlViewTest, ABusyDisplayThatIsOnCountsAsOn) {
    open({builtInDisplay(true), busy(externalDisplay(true))});

    EXPECT_TRUE(powerSwitch(0).isEnabled());
}

TEST_F(DisplayControlViewTest, ADisabledSwitchSaysThatItsDisplayMustStayOn) {
    open({builtInDisplay(true), externalDisplay(false)});

    EXPECT_EQ(powerSwitch(0).toolTip(), "At least one display must stay on");
    EXPECT_THAT(visibleTexts(row(0)), Contains(QString("Must stay on")));
    EXPECT_THAT(visibleTexts(row(1)), Not(Contains(QString("Must stay on"))));
}

TEST_F(DisplayControlViewTest, AnErrorTakesThePlaceOfTheStatus) {
    open({.displays = {builtInDisplay(true)}, .error = "It did not work"});
    EXPECT_NE(text("It did not work"), nullptr);
    EXPECT_EQ(text("Ready"), nullptr);

    setError(std::nullopt);
    EXPECT_EQ(text("It did not work"), nullptr);
    EXPECT_NE(text("Ready"), nullptr);
}

TEST_F(DisplayControlViewTest, AnEmptyErrorStillHidesTheStatus) {
    open({.displays = {builtInDisplay(true)}, .error = ""});

    EXPECT_EQ(text("Ready"), nullptr);
}

TEST_F(DisplayControlViewTest, ALongErrorHasTwoLinesAndNeverChangesTheWindow) {
    open({builtInDisplay(true), externalDisplay(true)});
    const QRect wake = faceIn(wakeButton(), *view);
    std::string endless = "Couldn’t wake: ";
    for (int i = 0; i < 100; ++i) {
        endless += "External Display " + std::to_string(i) + ", ";
    }

    setError(endless);

    Label* error = text(QString::fromStdString(endless));
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->visibleLines().size(), 2);
    EXPECT_TRUE(error->visibleLines().last().endsWith(u'…'));
    EXPECT_EQ(view->size(), QSize(520, 486));
    EXPECT_EQ(faceIn(wakeButton(), *view), wake);
    EXPECT_EQ(error->geometry().bottom() + 1, wake.top() - 10);
}

TEST_F(DisplayControlViewTest, ALongStatusStaysOnOneLineWithinTheColumn) {
    open({builtInDisplay(true)});

    setStatus(std::string(500, 'm'));

    Label* status = text(QString(500, u'm'));
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(rectIn(*status, *view).left(), 28);
    EXPECT_EQ(rectIn(*status, *view).right() + 1, 520 - 28);
    EXPECT_TRUE(status->visibleLines().first().endsWith(u'…'));
}

TEST_F(DisplayControlViewTest, DuringARefreshTheRowsAndTheWakeButtonStay) {
    open({.displays = {builtInDisplay(true), externalDisplay(true)}, .isRefreshing = true});

    EXPECT_TRUE(wakeButton().isEnabled());
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_TRUE(row(0).isVisible());
    EXPECT_FALSE(refreshButton().isEnabled());
}

TEST_F(DisplayControlViewTest, TheRefreshButtonRefreshesAndSaysSo) {
    openOnDesk({{.id = 5, .builtIn = true}});
    system.windowServer.connect({.id = 6});
    controller->setStatusMessage("Something else");
    EXPECT_EQ(refreshButton().toolTip(), "Refresh displays");

    click(refreshButton());
    EXPECT_TRUE(controller->isRefreshing());

    settle();
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_NE(text("Both displays are ready"), nullptr);
    EXPECT_FALSE(controller->isRefreshing());
}

TEST_F(DisplayControlViewTest, TheWakeButtonWakesAll) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6, .enabled = false}});

    click(wakeButton());
    EXPECT_TRUE(controller->displays().at(0).isBusy);

    settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(5U, true), Pair(6U, true)));
    EXPECT_NE(text("Both displays are on"), nullptr);
    EXPECT_TRUE(powerSwitch(1).isChecked());
}

TEST_F(DisplayControlViewTest, ASwitchTakesItsOwnDisplayOffAndBringsItBack) {
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

TEST_F(DisplayControlViewTest, AFlipIsAboutTheDisplayAsItIsShown) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6, .enabled = false}});
    std::vector<DisplayDevice> news = controller->displays();
    news.at(1).isOn = true;
    controller->setDisplays(news);

    powerSwitch(1).click();
    settle();

    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(6U, true)));
}

TEST_F(DisplayControlViewTest, ASwitchThatTheControllerRefusesGoesBack) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    SimulatedDisplay panel = *system.windowServer.find(5);
    panel.enabled = false;
    system.windowServer.replaceSilently(panel);

    click(powerSwitch(1));

    const std::vector<double> positions = knobPositions(powerSwitch(1));
    EXPECT_THAT(positions, Contains(0));
    EXPECT_EQ(positions.back(), 1);
    EXPECT_TRUE(powerSwitch(1).isChecked());
    EXPECT_TRUE(system.windowServer.takeChanges().empty());
    EXPECT_NE(text("Keep at least one display enabled so you can turn the other one back on."),
              nullptr);
}

TEST_F(DisplayControlViewTest, ASwitchThatFailsShowsItsOldPosition) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    lifecycle.refuse(6, serverStatus::illegalArgument);

    click(powerSwitch(1));
    settle();

    EXPECT_TRUE(powerSwitch(1).isVisible());
    EXPECT_TRUE(powerSwitch(1).isChecked());
    EXPECT_EQ(powerSwitch(1).knobPosition(), 1);
    EXPECT_NE(text(QString::fromStdString(controller->errorMessage().value())), nullptr);
}

TEST_F(DisplayControlViewTest, IsRebuiltOnceInATurnHoweverManyFieldsChange) {
    open({builtInDisplay(true)});
    int rebuilds = 0;
    QObject::connect(view.get(), &DisplayControlView::rebuilt, [&] { ++rebuilds; });

    show(*controller, {.displays = {builtInDisplay(false), externalDisplay(true)},
                       .status = "Changed",
                       .isRefreshing = true});
    EXPECT_EQ(rebuilds, 0);

    turn();
    EXPECT_EQ(rebuilds, 1);
    EXPECT_NE(text("Changed"), nullptr);

    setStatus("Changed again");
    EXPECT_EQ(rebuilds, 2);
}

TEST_F(DisplayControlViewTest, IsShownAsTheControllerIsByThen) {
    show(*controller, {.displays = {builtInDisplay(true)}, .status = "Before"});
    view = std::make_unique<DisplayControlView>(controller);
    show(*controller,
         {.displays = {builtInDisplay(true), externalDisplay(true)}, .status = "Meanwhile"});
    int rebuilds = 0;
    QObject::connect(view.get(), &DisplayControlView::rebuilt, [&] { ++rebuilds; });

    view->show();

    EXPECT_EQ(rebuilds, 1) << "before anything is painted";
    EXPECT_THAT(rows(), testing::SizeIs(2));
    EXPECT_NE(text("Meanwhile"), nullptr);
    turn();
    EXPECT_EQ(rebuilds, 1);
}

TEST_F(DisplayControlViewTest, ARowStaysTheSameWhileItsDisplayIsListed) {
    open({builtInDisplay(true), externalDisplay(true, 2), externalDisplay(true, 3, "Third")});
    DisplayRow* first = &row(0);
    DisplayRow* third = &row(2);

    setDisplays({externalDisplay(false, 3, "Renamed"), builtInDisplay(true)});

    EXPECT_THAT(rows(), ElementsAre(third, first));
    EXPECT_THAT(visibleTexts(row(0)), Contains(QString("Renamed")));
    EXPECT_LT(rectIn(row(0), *view).bottom(), rectIn(row(1), *view).top());
    EXPECT_EQ(view->findChildren<DisplayRow*>().size(), 2);
}

TEST_F(DisplayControlViewTest, MayOutliveEveryOtherOwnerOfTheController) {
    open({builtInDisplay(true), externalDisplay(true)});
    controller->setStatusMessage("Last words");

    controller.reset();
    turn();

    EXPECT_NE(text("Last words"), nullptr);
}

TEST_F(DisplayControlViewTest, AChangeAfterTheViewHasGoneIsHarmless) {
    open({builtInDisplay(true)});
    view.reset();

    setStatus("Nobody listens");

    EXPECT_EQ(controller->statusMessage(), "Nobody listens");
}

}  // namespace
}  // namespace tavrel
