#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

using RefreshTest = ControllerTest;

TEST_F(RefreshTest, aSecondCallWhileOneIsRunningIsDroppedWithItsMessage) {
    connectPanel();
    startAndSettle();
    const std::size_t writes = system.userDefaults.writes();
    controller->refresh("first");
    controller->refresh("second");
    scheduler.settle();
    EXPECT_EQ(status(), "first");
    EXPECT_EQ(system.userDefaults.writes(), writes + 1);
}

TEST_F(RefreshTest, oneDisplayIsFoundInTheSingular) {
    connectPanel();
    startAndSettle();
    EXPECT_EQ(status(), "Found 1 display");
    EXPECT_THAT(controller->displays(), SizeIs(1));
    EXPECT_FALSE(controller->isRefreshing());
}

TEST_F(RefreshTest, noDisplayIsFoundInThePlural) {
    startAndSettle();
    EXPECT_EQ(status(), "Found 0 displays");
}

TEST_F(RefreshTest, ThreeDisplaysAreCountedInOneMoment) {
    connectPanel();
    connectExternals();

    startAndSettle();

    EXPECT_EQ(status(), "Found 3 displays");
    EXPECT_EQ(server.moments(), 1U);
}

TEST_F(RefreshTest, exactlyTwoAreBothReadyWhateverTheirKinds) {
    connectExternals();
    startAndSettle();
    EXPECT_EQ(status(), "Both displays are ready");
}

TEST_F(RefreshTest, aMessageWinsOverTheCountAlsoWhenTheListIsEmpty) {
    startAndSettle();
    controller->refresh("message");
    scheduler.settle();
    EXPECT_THAT(controller->displays(), IsEmpty());
    EXPECT_EQ(status(), "message");
}

TEST_F(RefreshTest, aFailureKeepsTheListAndSetsBothTextsAndALaterStartClearsTheError) {
    connectPanel();
    startAndSettle();
    server.setHasPrivateList(false);
    server.setHasOnlineList(false);
    controller->refresh(std::nullopt);
    scheduler.settle();
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

TEST_F(RefreshTest, theErrorTextIsSetBeforeTheStatus) {
    startAndSettle();
    server.setHasPrivateList(false);
    server.setHasOnlineList(false);
    controller->refresh(std::nullopt);
    std::vector<std::string> statusWhenErrorStands;
    const auto subscription = controller->objectWillChange().subscribe([&] {
        if (error().has_value()) {
            statusWhenErrorStands.push_back(status());
        }
    });
    scheduler.settle();
    EXPECT_THAT(statusWhenErrorStands, testing::ElementsAre("Found 0 displays"));
}

TEST_F(RefreshTest, aBusyMarkIsReplacedByTheNewList) {
    connectPanel();
    connectExternals();
    startAndSettle();
    lifecycle.setLatency(1s);
    set(firstExternal, false);
    EXPECT_TRUE(listed(firstExternal).isBusy);
    controller->refresh(std::nullopt);
    scheduler.settle();
    EXPECT_FALSE(listed(firstExternal).isBusy);
    EXPECT_TRUE(listed(firstExternal).isOn);
    scheduler.advance(2s);
    EXPECT_FALSE(listed(firstExternal).isOn);
}

TEST_F(RefreshTest, theOutcomeForAControllerThatHasGoneIsDropped) {
    connectPanel();
    start();
    controller.reset();
    scheduler.settle();
    EXPECT_EQ(server.callbacks(), 0U);
}

}  // namespace
}  // namespace tavrel
