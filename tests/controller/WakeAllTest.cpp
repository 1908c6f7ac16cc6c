#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class WakeAllTest : public ControllerTest {
protected:
    void wakeAll() {
        controller->wakeAll();
        scheduler.settle();
    }
};

TEST_F(WakeAllTest, OneDisplayIsBothDisplaysToo) {
    startWith({panel});

    controller->wakeAll();

    EXPECT_EQ(status(), "Waking both displays…");
    scheduler.settle();
    EXPECT_EQ(status(), "Both displays are on");
}

TEST_F(WakeAllTest, EveryListedDisplayIsEnabledInListOrderAlsoThoseThatAreOn) {
    startWith(allThree);
    set(firstExternal, false);
    scheduler.settle();
    server.takeChanges();

    wakeAll();

    EXPECT_EQ(server.takeChanges(), switchedOn({panel, firstExternal, secondExternal}));
    EXPECT_TRUE(listed(firstExternal).isOn);
    EXPECT_FALSE(listed(firstExternal).isBusy);
}

TEST_F(WakeAllTest, ADisplayThatFailsIsNamedAndDoesNotStopTheOthers) {
    startWith(allThree);
    displaySwitch.refuse(firstExternal, 1004);

    wakeAll();

    EXPECT_EQ(status(), "Some displays couldn’t be woken");
    EXPECT_EQ(error(), "Couldn’t wake: External Display 1");
    EXPECT_FALSE(listed(firstExternal).isOn);
    EXPECT_TRUE(listed(secondExternal).isOn);
    EXPECT_EQ(server.takeChanges(), switchedOn({panel, secondExternal}));
}

TEST_F(WakeAllTest, TwoDisplaysThatFailAreNamedInOrder) {
    startWith(allThree);
    displaySwitch.refuse(firstExternal, 1004);
    displaySwitch.refuse(secondExternal, 1001);

    wakeAll();

    EXPECT_EQ(error(), "Couldn’t wake: External Display 1, External Display 2");
}

TEST_F(WakeAllTest, AFailureSetsTheStatusBeforeTheErrorText) {
    startWith(allThree);
    displaySwitch.refuse(firstExternal, 1004);
    controller->wakeAll();
    std::optional<std::string> lastStatus;
    const auto subscription =
        controller->objectWillChange().subscribe([&] { lastStatus = status(); });

    scheduler.settle();

    EXPECT_EQ(lastStatus, "Some displays couldn’t be woken");
}

TEST_F(WakeAllTest, WithoutControlEveryDisplayFails) {
    startWith(allThree);
    server.setCanControl(false);

    wakeAll();

    EXPECT_EQ(error(), "Couldn’t wake: MacBook Display, External Display 1, External Display 2");
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WakeAllTest, TheServerIsAskedForControlBeforeEachDisplayAndOffTheMainThread) {
    startWith(allThree);

    wakeAll();

    EXPECT_THAT(calls.calls(),
                ElementsAre("can switch", "5 on", "can switch", "1 on", "can switch", "3 on"));
    EXPECT_THAT(calls.onMainThread(), IsEmpty());
}

TEST_F(WakeAllTest, DisplaysOfOneNameAreAllShownOffWhenOneFails) {
    startWith({firstExternal, secondExternal});
    displaySwitch.refuse(secondExternal, 1004);

    wakeAll();

    EXPECT_EQ(error(), "Couldn’t wake: External Display");
    EXPECT_FALSE(listed(firstExternal).isOn);
    EXPECT_FALSE(listed(secondExternal).isOn);
}

TEST_F(WakeAllTest, ADisplayThatLeftTheListMeanwhileIsStillNamed) {
    startWith(allThree);
    displaySwitch.refuse(secondExternal, 1004);

    controller->wakeAll();
    controller->setDisplays({listed(panel)});
    scheduler.settle();

    EXPECT_EQ(error(), "Couldn’t wake: External Display 2");
    EXPECT_THAT(controller->displays(), SizeIs(1));
    EXPECT_TRUE(listed(panel).isOn);
}

TEST_F(WakeAllTest, AnEmptyListIsOnlyRefreshed) {
    startWith({});

    controller->wakeAll();

    EXPECT_TRUE(controller->isRefreshing());
    EXPECT_EQ(status(), "Found 0 displays");
    connect({panel});
    scheduler.settle();
    EXPECT_EQ(status(), "Found 1 display");
}

TEST_F(WakeAllTest, AllDisplaysAreBusyUntilItEndsAlsoThoseThatWereBusy) {
    startWith(allThree);
    set(firstExternal, false);

    controller->wakeAll();

    EXPECT_THAT(controller->displays(), Each(Field("isBusy", &DisplayDevice::isBusy, true)));
    scheduler.settle();
    EXPECT_THAT(controller->displays(), Each(Field("isBusy", &DisplayDevice::isBusy, false)));
}

TEST_F(WakeAllTest, ItsStartClearsTheErrorTextAndItsSuccessKeepsALaterOne) {
    startWith(allThree);
    controller->setErrorMessage("old");

    controller->wakeAll();

    EXPECT_EQ(error(), std::nullopt);
    controller->setErrorMessage("meanwhile");
    scheduler.settle();
    EXPECT_EQ(error(), "meanwhile");
}

TEST_F(WakeAllTest, ItsStartMarksTheDisplaysThenClearsTheErrorTextThenSetsTheStatus) {
    startWith({panel, firstExternal});
    controller->setErrorMessage("old");

    const auto seen =
        atEachSignal([&] { return std::pair(busy(), texts()); }, [&] { controller->wakeAll(); });

    const std::string before = "Both displays are ready";
    EXPECT_THAT(seen,
                ElementsAre(Pair(0, Pair("old", before)), Pair(1, Pair("old", before)),
                            Pair(2, Pair("old", before)), Pair(2, Pair(std::nullopt, before))));
}

TEST_F(WakeAllTest, ItsEndEditsTheDisplaysBeforeItSetsTheTexts) {
    for (const ServerStatus outcome : {serverStatus::success, serverStatus::cannotComplete}) {
        startWith({panel, firstExternal});
        displaySwitch.refuse(firstExternal, outcome);
        controller->wakeAll();

        const auto seen =
            atEachSignal([&] { return std::pair(busy(), texts()); }, [&] { scheduler.settle(); });

        const std::pair waking(std::optional<std::string>(), "Waking both displays…");
        ASSERT_GE(seen.size(), 3U);
        EXPECT_THAT(seen[0], Pair(2, waking));
        EXPECT_THAT(seen[1], Pair(1, waking));
        EXPECT_THAT(seen[2], Pair(0, waking));
    }
}

TEST_F(WakeAllTest, ItNeitherMovesTheSuppressionNorRefreshes) {
    startWith(allThree);
    const std::size_t writes = system.userDefaults.writes();

    controller->wakeAll();
    scheduler.advance(5s);

    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
    EXPECT_EQ(system.userDefaults.writes(), writes);
}

TEST_F(WakeAllTest, TheOutcomeForADestroyedControllerIsDropped) {
    startWith(allThree);
    controller->wakeAll();

    expectKeptByItsJobsAlone();

    EXPECT_EQ(server.takeChanges(), switchedOn(allThree));
}

}  // namespace
}  // namespace tavrel
