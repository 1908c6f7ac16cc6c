#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST_F(ViewTest, TabWalksFromRefreshOverTheRowsToWake) {
    open({builtInDisplay(true), externalDisplay(true)});
    refreshButton().setFocus(Qt::TabFocusReason);
    type(*view, Qt::Key_Tab);
    EXPECT_EQ(focused(), &powerSwitch(0));
    type(*view, Qt::Key_Tab);
    EXPECT_EQ(focused(), &powerSwitch(1));
    type(*view, Qt::Key_Tab);
    EXPECT_EQ(focused(), &wakeButton());
    type(*view, Qt::Key_Tab);
    EXPECT_EQ(focused(), &refreshButton());
}

TEST_F(ViewTest, TabFollowsTheOrderOfTheListWhenThatChanges) {
    open({externalDisplay(true, 2), externalDisplay(true, 3)});
    controller->setDisplays({externalDisplay(true, 4), externalDisplay(true, 3)});
    turn();
    refreshButton().setFocus(Qt::TabFocusReason);
    for (QWidget* expected :
         {static_cast<QWidget*>(&powerSwitch(0)), static_cast<QWidget*>(&powerSwitch(1)),
          static_cast<QWidget*>(&wakeButton())}) {
        type(*view, Qt::Key_Tab);
        EXPECT_EQ(focused(), expected);
    }
}

TEST_F(ViewTest, FocusReturnsToTheSwitchWhenItsSpinnerHasGone) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    powerSwitch(1).setFocus(Qt::TabFocusReason);
    type(*view, Qt::Key_Space);
    turn();
    ASSERT_FALSE(powerSwitch(1).isVisible());
    EXPECT_EQ(focused(), &row(1));
    // Nothing else hears the keyboard in the meantime.
    type(*view, Qt::Key_Space);
    settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(6U, false)));
    EXPECT_EQ(focused(), &powerSwitch(1));
    EXPECT_TRUE(powerSwitch(1).showsFocusRing());
}

TEST_F(ViewTest, FocusThatTheUserHasMovedOnIsNotTakenBack) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}, {.id = 7}});
    powerSwitch(0).setFocus(Qt::TabFocusReason);
    type(*view, Qt::Key_Space);
    turn();
    type(*view, Qt::Key_Tab);
    EXPECT_EQ(focused(), &powerSwitch(1));
    settle();
    EXPECT_TRUE(powerSwitch(0).isVisible());
    EXPECT_EQ(focused(), &powerSwitch(1));
}

TEST_F(ViewTest, TheRefreshButtonKeepsTheFocusThroughARefresh) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    refreshButton().setFocus(Qt::TabFocusReason);
    type(*view, Qt::Key_Return);
    turn();
    ASSERT_FALSE(refreshButton().isEnabled());
    type(*view, Qt::Key_Space);
    settle();
    EXPECT_TRUE(system.windowServer.takeChanges().empty());
    EXPECT_EQ(focused(), &refreshButton());
    EXPECT_TRUE(refreshButton().showsFocusRing());
}

TEST_F(ViewTest, TheWakeButtonKeepsTheFocusWhileTheListIsEmpty) {
    open({builtInDisplay(true)});
    wakeButton().setFocus(Qt::TabFocusReason);
    controller->setDisplays({});
    turn();
    EXPECT_FALSE(wakeButton().isEnabled());
    controller->setDisplays({builtInDisplay(true)});
    turn();
    EXPECT_EQ(focused(), &wakeButton());
}

TEST_F(ViewTest, ASwitchThatBecomesDisabledHandsItsFocusToNoOtherSwitch) {
    open({builtInDisplay(true), externalDisplay(true)});
    powerSwitch(0).setFocus(Qt::TabFocusReason);
    controller->setDisplays({builtInDisplay(true), externalDisplay(false)});
    turn();
    EXPECT_FALSE(powerSwitch(0).isEnabled());
    EXPECT_EQ(focused(), &row(0));
    controller->setDisplays({builtInDisplay(true), externalDisplay(true)});
    turn();
    EXPECT_EQ(focused(), &powerSwitch(0));
}

TEST_F(ViewTest, ARowThatGoesHandsItsFocusToNoOtherSwitch) {
    open({builtInDisplay(true), externalDisplay(true), externalDisplay(true, 3)});
    powerSwitch(1).setFocus(Qt::TabFocusReason);
    controller->setDisplays({builtInDisplay(true), externalDisplay(true, 3)});
    turn();
    EXPECT_EQ(focused(), view.get());
}

TEST_F(ViewTest, AWindowThatOpensShowsNoFocusRing) {
    open({builtInDisplay(true), externalDisplay(true)});
    for (const Control* control : view->findChildren<Control*>()) {
        EXPECT_FALSE(control->showsFocusRing()) << control->metaObject()->className();
    }
}

TEST_F(ViewTest, AWindowThatComesBackToTheFrontKeepsTheFocusRing) {
    open({builtInDisplay(true), externalDisplay(true)});
    powerSwitch(1).setFocus(Qt::TabFocusReason);
    QWidget other;
    showActive(other);
    view->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    EXPECT_EQ(focused(), &powerSwitch(1));
    EXPECT_TRUE(powerSwitch(1).showsFocusRing());
}

TEST_F(ViewTest, AClickShowsNoFocusRing) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    click(powerSwitch(1));
    settle();
    EXPECT_EQ(focused(), &powerSwitch(1));
    EXPECT_FALSE(powerSwitch(1).showsFocusRing());
}

}  // namespace
}  // namespace tavrel
