#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::SizeIs;

class RefreshTest : public ControllerTest {
protected:
    void refresh(const std::optional<std::string>& message = std::nullopt) {
        controller->refresh(message);
        scheduler.settle();
    }

    void loseBothLists() {
        server.setHasPrivateList(false);
        server.setHasOnlineList(false);
    }
};

TEST_F(RefreshTest, ASecondOneWhileOneIsRunningIsIgnoredWithItsMessage) {
    startWith({panel});
    const std::size_t writes = system.userDefaults.writes();
    recordStatuses();

    controller->refresh("first");
    controller->refresh("second");
    scheduler.advance(900ms);

    EXPECT_THAT(statuses(), ElementsAre("Found 1 display", "first"));
    EXPECT_EQ(system.userDefaults.writes(), writes + 1);
}

TEST_F(RefreshTest, OneDisplayIsCountedInTheSingular) {
    startWith({panel});

    EXPECT_EQ(status(), "Found 1 display");
    EXPECT_THAT(controller->displays(), SizeIs(1));
    EXPECT_FALSE(controller->isRefreshing());
}

TEST_F(RefreshTest, NoDisplayIsCountedInThePlural) {
    startWith({});

    EXPECT_EQ(status(), "Found 0 displays");
}

TEST_F(RefreshTest, ThreeDisplaysAreCountedInOneMoment) {
    startWith(allThree);

    EXPECT_EQ(status(), "Found 3 displays");
    EXPECT_EQ(server.moments(), 1U);
}

TEST_F(RefreshTest, ExactlyTwoDisplaysAreBothReadyWhateverTheirKinds) {
    startWith({firstExternal, secondExternal});

    EXPECT_EQ(status(), "Both displays are ready");
}

TEST_F(RefreshTest, AMessageReplacesTheCountAlsoOfAnEmptyList) {
    startWith({});

    refresh("message");

    EXPECT_THAT(controller->displays(), IsEmpty());
    EXPECT_EQ(status(), "message");
}

TEST_F(RefreshTest, AFailureKeepsTheListAndSetsBothTextsUntilTheNextOneStarts) {
    startWith({panel});
    loseBothLists();

    refresh();

    EXPECT_THAT(controller->displays(), SizeIs(1));
    EXPECT_EQ(status(), "Display control unavailable");
    EXPECT_EQ(error(), "Couldn’t understand the connected-display list");
    EXPECT_FALSE(controller->isRefreshing());

    server.setHasOnlineList(true);
    controller->refresh(std::nullopt);
    EXPECT_EQ(error(), std::nullopt);
    scheduler.settle();
    EXPECT_EQ(status(), "Found 1 display");
}

TEST_F(RefreshTest, AFailureSetsTheErrorTextBeforeTheStatus) {
    startWith({});
    loseBothLists();

    EXPECT_THAT(statusesBesideAnError([&] { refresh(); }), ElementsAre("Found 0 displays"));
}

TEST_F(RefreshTest, TheNewListIsThereBeforeTheStatusThatCountsIt) {
    startWith({panel});
    connect({firstExternal});

    const auto seen = atEachSignal(
        [&] { return std::pair(controller->displays().size(), status()); }, [&] { refresh(); });

    EXPECT_THAT(seen.back(), Pair(2U, "Found 1 display"));
    EXPECT_EQ(status(), "Both displays are ready");
}

TEST_F(RefreshTest, ItIsOverBeforeTheNewListIsThere) {
    startWith({panel});
    connect({firstExternal});

    const auto seen = atEachSignal(
        [&] { return std::pair(controller->isRefreshing(), controller->displays().size()); },
        [&] { refresh(); });

    // Refreshing, error text, refreshing, list, status.
    EXPECT_THAT(seen, ElementsAre(Pair(false, 1U), Pair(true, 1U), Pair(true, 1U), Pair(false, 1U),
                                  Pair(false, 2U)));
}

TEST_F(RefreshTest, TheServerIsNotAskedOnTheMainThread) {
    startWith({panel});

    refresh();

    EXPECT_THAT(calls.calls(), Not(IsEmpty()));
    EXPECT_THAT(calls.onMainThread(), IsEmpty());
}

TEST_F(RefreshTest, TheNewListHasNoBusyMarks) {
    startWith(allThree);
    displaySwitch.setLatency(1s);
    set(firstExternal, false);
    EXPECT_TRUE(listed(firstExternal).isBusy);

    refresh();

    EXPECT_FALSE(listed(firstExternal).isBusy);
    EXPECT_TRUE(listed(firstExternal).isOn);
    scheduler.advance(2s);
    EXPECT_FALSE(listed(firstExternal).isOn);
}

TEST_F(RefreshTest, TheOutcomeForADestroyedControllerIsDropped) {
    connect({panel});
    start();

    expectKeptByItsJobsAlone();
}

}  // namespace
}  // namespace tavrel
