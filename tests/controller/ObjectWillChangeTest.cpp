#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;

TEST(ObjectWillChange, EndsASubscriptionWhenItIsDestroyed) {
    ObjectWillChange signal;
    int calls = 0;
    {
        const auto subscription = signal.subscribe([&] { ++calls; });
        signal.send();
    }

    signal.send();

    EXPECT_EQ(calls, 1);
}

TEST(ObjectWillChange, KeepsAMovedSubscriptionAndEndsAReplacedOne) {
    ObjectWillChange signal;
    int first = 0;
    int second = 0;
    auto subscription = signal.subscribe([&] { ++first; });
    auto moved = std::move(subscription);
    signal.send();

    moved = signal.subscribe([&] { ++second; });
    signal.send();
    auto& same = moved;
    moved = std::move(same);
    signal.send();

    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
}

TEST(ObjectWillChange, DoesNotCallAnObserverThatAnEarlierOneUnsubscribed) {
    ObjectWillChange signal;
    int calls = 0;
    ObjectWillChange::Subscription second;
    const auto first = signal.subscribe([&] { second = ObjectWillChange::Subscription(); });
    second = signal.subscribe([&] { ++calls; });

    signal.send();

    EXPECT_EQ(calls, 0);
}

using PublishedFieldsTest = ControllerTest;

TEST_F(PublishedFieldsTest, TheSignalComesBeforeEachWrite) {
    startWith({panel});

    EXPECT_THAT(atEachSignal([&] { return controller->displays().size(); },
                             [&] { controller->setDisplays({}); }),
                ElementsAre(1U));
    EXPECT_THAT(atEachSignal([&] { return controller->isRefreshing(); },
                             [&] { controller->setIsRefreshing(true); }),
                ElementsAre(false));
    EXPECT_THAT(
        atEachSignal([&] { return status(); }, [&] { controller->setStatusMessage("text"); }),
        ElementsAre("Found 1 display"));
    EXPECT_THAT(atEachSignal([&] { return error(); }, [&] { controller->setErrorMessage("text"); }),
                ElementsAre(std::nullopt));
}

TEST_F(PublishedFieldsTest, EachOfTheFourSendsTheSignal) {
    startWith({});

    EXPECT_EQ(signalsDuring([&] { controller->setDisplays({}); }), 1);
    EXPECT_EQ(signalsDuring([&] { controller->setIsRefreshing(false); }), 1);
    EXPECT_EQ(signalsDuring([&] { controller->setStatusMessage("text"); }), 1);
    EXPECT_EQ(signalsDuring([&] { controller->setErrorMessage(std::nullopt); }), 1);
}

TEST_F(PublishedFieldsTest, TheSignalComesBeforeAnEntryIsEditedInPlace) {
    startWith(allThree);

    const auto busyAtSignal = atEachSignal([&] { return listed(firstExternal).isBusy; },
                                           [&] { set(firstExternal, false); });

    // Marked busy; error text; status text.
    EXPECT_THAT(busyAtSignal, ElementsAre(false, true, true));
}

}  // namespace
}  // namespace tavrel
