#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::Pair;

class ViewFocusTest : public ViewTest {
protected:
    /// Gives a control the focus as the Tab key does.
    static void focus(Control& control) { control.setFocus(Qt::TabFocusReason); }

    /// What has the focus after each press of Tab until the focus is where it was.
    std::vector<QWidget*> tabRound() {
        constexpr std::size_t endless = 100;
        const QWidget* start = focused();
        std::vector<QWidget*> reached;
        do {
            type(*view, Qt::Key_Tab);
            reached.push_back(focused());
        } while (focused() != start && reached.size() < endless);
        return reached;
    }
};

TEST_F(ViewFocusTest, TabGoesRoundInTheOrderOfTheListAlsoAfterItChanges) {
    open({externalDisplay(true, 2), externalDisplay(true, 3)});
    focus(refreshButton());
    const auto expectRound = [this] {
        EXPECT_THAT(tabRound(),
                    ElementsAre(&powerSwitch(0), &powerSwitch(1), &wakeButton(), &refreshButton()));
    };
    expectRound();

    setDisplays({externalDisplay(true, 4), externalDisplay(true, 3)});
    expectRound();
}

TEST_F(ViewFocusTest, TheFocusReturnsToTheSwitchWhenItsSpinnerHasGone) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    focus(powerSwitch(1));

    type(*view, Qt::Key_Space);
    turn();
    ASSERT_FALSE(powerSwitch(1).isVisible());
    EXPECT_EQ(focused(), &row(1));

    // Nothing else reacts to the keyboard in the meantime.
    type(*view, Qt::Key_Space);
    settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(6U, false)));
    EXPECT_EQ(focused(), &powerSwitch(1));
    EXPECT_TRUE(powerSwitch(1).showsFocusRing());
}

TEST_F(ViewFocusTest, AFocusThatTheUserHasMovedOnIsNotTakenBack) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}, {.id = 7}});
    focus(powerSwitch(0));
    type(*view, Qt::Key_Space);
    turn();

    type(*view, Qt::Key_Tab);
    EXPECT_EQ(focused(), &powerSwitch(1));

    settle();
    EXPECT_TRUE(powerSwitch(0).isVisible());
    EXPECT_EQ(focused(), &powerSwitch(1));
}

TEST_F(ViewFocusTest, TheRefreshButtonKeepsTheFocusThroughARefresh) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    focus(refreshButton());

    type(*view, Qt::Key_Return);
    turn();
    ASSERT_FALSE(refreshButton().isEnabled());

    type(*view, Qt::Key_Space);
    settle();
    EXPECT_TRUE(system.windowServer.takeChanges().empty());
    EXPECT_EQ(focused(), &refreshButton());
    EXPECT_TRUE(refreshButton().showsFocusRing());
}

TEST_F(ViewFocusTest, TheWakeButtonKeepsTheFocusWhileTheListIsEmpty) {
    open({builtInDisplay(true)});
    focus(wakeButton());

    setDisplays({});
    EXPECT_FALSE(wakeButton().isEnabled());

    setDisplays({builtInDisplay(true)});
    EXPECT_EQ(focused(), &wakeButton());
}

TEST_F(ViewFocusTest, ASwitchThatBecomesDisabledHandsItsFocusToNoOtherSwitch) {
    open({builtInDisplay(true), externalDisplay(true)});
    focus(powerSwitch(0));

    setDisplays({builtInDisplay(true), externalDisplay(false)});
    EXPECT_FALSE(powerSwitch(0).isEnabled());
    EXPECT_EQ(focused(), &row(0));

    setDisplays({builtInDisplay(true), externalDisplay(true)});
    EXPECT_EQ(focused(), &powerSwitch(0));
}

TEST_F(ViewFocusTest, ARowThatGoesHandsItsFocusToNoOtherSwitch) {
    open({builtInDisplay(true), externalDisplay(true), externalDisplay(true, 3)});
    focus(powerSwitch(1));

    setDisplays({builtInDisplay(true), externalDisplay(true, 3)});

    EXPECT_EQ(focused(), view.get());
}

TEST_F(ViewFocusTest, AWindowThatOpensShowsNoFocusRing) {
    open({builtInDisplay(true), externalDisplay(true)});

    for (const Control* control : view->findChildren<Control*>()) {
        EXPECT_FALSE(control->showsFocusRing()) << control->metaObject()->className();
    }
}

TEST_F(ViewFocusTest, AWindowThatIsActivatedAgainKeepsTheFocusRing) {
    open({builtInDisplay(true), externalDisplay(true)});
    focus(powerSwitch(1));

    QWidget other;
    showActive(other);
    showActive(*view);

    EXPECT_EQ(focused(), &powerSwitch(1));
    EXPECT_TRUE(powerSwitch(1).showsFocusRing());
}

TEST_F(ViewFocusTest, AClickShowsNoFocusRing) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});

    click(powerSwitch(1));
    settle();

    EXPECT_EQ(focused(), &powerSwitch(1));
    EXPECT_FALSE(powerSwitch(1).showsFocusRing());
}

}  // namespace
}  // namespace tavrel
