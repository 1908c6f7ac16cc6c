#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;

TEST(ObjectWillChangeTest, aSubscriptionEndsWhenItIsDestroyed) {
    ObjectWillChange signal;
    int calls = 0;
    {
        const auto subscription = signal.subscribe([&] { ++calls; });
        signal.send();
    }
    signal.send();
    EXPECT_EQ(calls, 1);
}

TEST(ObjectWillChangeTest, aMovedSubscriptionGoesOnAndAReplacedOneEnds) {
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

TEST(ObjectWillChangeTest, anObserverThatAnEarlierOneUnsubscribedIsNotTold) {
    ObjectWillChange signal;
    int calls = 0;
    ObjectWillChange::Subscription second;
    const auto first = signal.subscribe([&] { second = ObjectWillChange::Subscription(); });
    second = signal.subscribe([&] { ++calls; });
    signal.send();
    EXPECT_EQ(calls, 0);
}

using PublishedFieldsTest = ControllerTest;

TEST_F(PublishedFieldsTest, theSignalComesBeforeEachWrite) {
    startAndSettle();
    std::vector<std::string> seen;
    const auto subscription =
        controller->objectWillChange().subscribe([&] { seen.push_back(status()); });
    controller->setStatusMessage("first");
    controller->setStatusMessage("second");
    EXPECT_THAT(seen, ElementsAre("Found 0 displays", "first"));
}

TEST_F(PublishedFieldsTest, everyPublishedFieldSendsIt) {
    startAndSettle();
    int calls = 0;
    const auto subscription = controller->objectWillChange().subscribe([&] { ++calls; });
    controller->setDisplays({});
    controller->setIsRefreshing(false);
    controller->setStatusMessage("text");
    controller->setErrorMessage(std::nullopt);
    EXPECT_EQ(calls, 4);
}

TEST_F(PublishedFieldsTest, itComesBeforeAnEntryIsEditedInPlace) {
    connectPanel();
    connectExternals();
    startAndSettle();
    std::vector<bool> busyAtSignal;
    const auto subscription = controller->objectWillChange().subscribe(
        [&] { busyAtSignal.push_back(listed(firstExternal).isBusy); });
    set(firstExternal, false);
    // Marked busy; error text; status text.
    EXPECT_THAT(busyAtSignal, ElementsAre(false, true, true));
}

}  // namespace
}  // namespace tavrel
