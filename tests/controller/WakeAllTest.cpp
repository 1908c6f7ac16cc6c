#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class WakeAllTest : public ControllerTest {
protected:
    void startWithThree() {
        connectPanel();
        connectExternals();
        startAndSettle();
    }
};

TEST_F(WakeAllTest, oneDisplayIsBothDisplaysToo) {
    connectPanel();
    startAndSettle();
    controller->wakeAll();
    EXPECT_EQ(status(), "Waking both displays…");
    scheduler.settle();
    EXPECT_EQ(status(), "Both displays are on");
}

TEST_F(WakeAllTest, everyListedDisplayIsEnabledInListOrderAlsoThoseThatAreOn) {
    startWithThree();
    set(firstExternal, false);
    scheduler.settle();
    server.takeChanges();
    controller->wakeAll();
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true), Pair(firstExternal, true),
                                                  Pair(secondExternal, true)));
    EXPECT_TRUE(listed(firstExternal).isOn);
    EXPECT_FALSE(listed(firstExternal).isBusy);
}

TEST_F(WakeAllTest, theOneThatFailsIsNamedAndDoesNotStopTheOthers) {
    startWithThree();
    lifecycle.refuse(firstExternal, 1004);
    controller->wakeAll();
    scheduler.settle();
    EXPECT_EQ(status(), "Some displays couldn’t be woken");
    EXPECT_EQ(error(), "Couldn’t wake: External Display 1");
    EXPECT_FALSE(listed(firstExternal).isOn);
    EXPECT_TRUE(listed(secondExternal).isOn);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true), Pair(secondExternal, true)));
}

TEST_F(WakeAllTest, twoThatFailAreNamedInOrder) {
    startWithThree();
    lifecycle.refuse(firstExternal, 1004);
    lifecycle.refuse(secondExternal, 1001);
    controller->wakeAll();
    scheduler.settle();
    EXPECT_EQ(error(), "Couldn’t wake: External Display 1, External Display 2");
}

TEST_F(WakeAllTest, theStatusIsSetBeforeTheErrorText) {
    startWithThree();
    lifecycle.refuse(firstExternal, 1004);
    controller->wakeAll();
    std::optional<std::string> lastStatus;
    const auto subscription =
        controller->objectWillChange().subscribe([&] { lastStatus = status(); });
    scheduler.settle();
    EXPECT_EQ(lastStatus, "Some displays couldn’t be woken");
}

TEST_F(WakeAllTest, withoutControlEveryOneFails) {
    startWithThree();
    server.setCanControl(false);
    controller->wakeAll();
    scheduler.settle();
    EXPECT_EQ(error(), "Couldn’t wake: MacBook Display, External Display 1, External Display 2");
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WakeAllTest, displaysOfOneNameAreShownOffTogetherWhenOneFails) {
    connectExternals();
    startAndSettle();
    lifecycle.refuse(secondExternal, 1004);
    controller->wakeAll();
    scheduler.settle();
    EXPECT_EQ(error(), "Couldn’t wake: External Display");
    EXPECT_FALSE(listed(firstExternal).isOn);
    EXPECT_FALSE(listed(secondExternal).isOn);
}

TEST_F(WakeAllTest, aDisplayRemovedMeanwhileIsSkippedButStillNamed) {
    startWithThree();
    lifecycle.refuse(secondExternal, 1004);
    controller->wakeAll();
    controller->setDisplays({listed(panel)});
    scheduler.settle();
    EXPECT_EQ(error(), "Couldn’t wake: External Display 2");
    EXPECT_EQ(controller->displays().size(), 1U);
    EXPECT_TRUE(listed(panel).isOn);
}

TEST_F(WakeAllTest, anEmptyListOnlyRefreshes) {
    startAndSettle();
    controller->wakeAll();
    EXPECT_TRUE(controller->isRefreshing());
    EXPECT_EQ(status(), "Found 0 displays");
    connectPanel();
    scheduler.settle();
    EXPECT_EQ(status(), "Found 1 display");
}

TEST_F(WakeAllTest, allDisplaysAreBusyUntilTheCompletionAlsoBusyOnes) {
    startWithThree();
    set(firstExternal, false);
    controller->wakeAll();
    for (const DisplayDevice& display : controller->displays()) {
        EXPECT_TRUE(display.isBusy) << display.name();
    }
    scheduler.settle();
    for (const DisplayDevice& display : controller->displays()) {
        EXPECT_FALSE(display.isBusy) << display.name();
    }
}

TEST_F(WakeAllTest, itClearsTheErrorTextAtItsStartAndLeavesItAloneAtItsEnd) {
    startWithThree();
    controller->setErrorMessage("old");
    controller->wakeAll();
    EXPECT_EQ(error(), std::nullopt);
    controller->setErrorMessage("meanwhile");
    scheduler.settle();
    EXPECT_EQ(error(), "meanwhile");
}

TEST_F(WakeAllTest, itNeitherMovesTheSuppressionNorRefreshes) {
    startWithThree();
    const std::size_t writes = system.userDefaults.writes();
    controller->wakeAll();
    scheduler.advance(5s);
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
    EXPECT_EQ(system.userDefaults.writes(), writes);
}

TEST_F(WakeAllTest, theOutcomeForAControllerThatHasGoneIsDropped) {
    startWithThree();
    controller->wakeAll();
    controller.reset();
    scheduler.settle();
    EXPECT_EQ(server.callbacks(), 0U);
}

}  // namespace
}  // namespace tavrel
