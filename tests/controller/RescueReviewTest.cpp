// What becomes of a rescue that is decided while the server is silent.
#include "platform/RescueReview.h"

#include "tests/controller/ControllerTest.h"
#include "tests/simulated/SilentQueries.h"

namespace tavrel {
namespace {

using testing::IsEmpty;

class RescueReviewTest : public ControllerTest {
protected:
    /// The user has switched off one of the two, another program the other, and nobody has
    /// looked yet when the server falls silent.
    RescueReviewTest() {
        connect({firstExternal, secondExternal});
        const Platform simulated = system.platform();
        controller =
            DisplayController::create({.displaySwitch = review,
                                       .queries = review,
                                       .reports = simulated.reports,
                                       .userDefaults = simulated.userDefaults,
                                       .wallClock = simulated.wallClock,
                                       .mainQueue = simulated.mainQueue,
                                       .backgroundQueue = simulated.backgroundQueue,
                                       .notificationCenter = simulated.notificationCenter});
        scheduler.settle();
        set(secondExternal, false);
        scheduler.settle();
        switchOffSilently({firstExternal});
        queries.fallSilent();
        server.takeChanges();
    }

    ~RescueReviewTest() override {
        release();
        scheduler.shutDown();
    }

    void anotherProgramBringsTheFirstBack() { server.replaceSilently({.id = firstExternal}); }

    SilentQueries queries{server};
    RescueReview review{displaySwitch, queries, scheduler.mainQueue()};
};

TEST_F(RescueReviewTest, WhatTheUserSwitchedOffStaysOffIfAnythingIsUsableWhenTheServerSpeaks) {
    queries.whileAwaited = [this] {
        anotherProgramBringsTheFirstBack();
        queries.speak();
    };

    scheduler.advance(1h);

    EXPECT_THAT(server.takeChanges(), IsEmpty());
    EXPECT_FALSE(server.find(secondExternal)->enabled);
}

TEST_F(RescueReviewTest, NothingUsableWhenTheServerSpeaksIsRescued) {
    queries.whileAwaited = [this] { queries.speak(); };

    scheduler.advance(2s);

    EXPECT_EQ(server.takeChanges(), switchedOn({firstExternal, secondExternal}));
}

TEST_F(RescueReviewTest, ALayoutLostAfterwardsIsRescuedWhole) {
    queries.whileAwaited = [this] {
        anotherProgramBringsTheFirstBack();
        queries.speak();
    };
    scheduler.advance(10s);

    switchOffSilently({firstExternal});
    scheduler.advance(2s);

    EXPECT_EQ(server.takeChanges(), switchedOn({firstExternal, secondExternal}));
}

TEST_F(RescueReviewTest, WhileTheServerIsSilentNothingIsSwitchedUnasked) {
    scheduler.advance(1h);

    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(RescueReviewTest, WhatTheUserAsksForIsCarriedOut) {
    scheduler.advance(10s);

    set(secondExternal, true);
    scheduler.settle();

    EXPECT_EQ(server.takeChanges(), switchedOn({secondExternal}));
}

TEST_F(RescueReviewTest, WhoeverAsksBeforehandWhetherDisplaysCanBeSwitchedActsForTheUser) {
    ServerStatus status = -1;
    scheduler.backgroundQueue().async([&] {
        review.now();
        review.canSwitch();
        status = review.setDisplayEnabled(secondExternal, true);
    });

    scheduler.runBackgroundJobs();

    EXPECT_EQ(status, serverStatus::success);
}

TEST_F(RescueReviewTest, WhatIsAskedForAgainIsCarriedOut) {
    std::vector<ServerStatus> statuses;
    scheduler.backgroundQueue().async([&] {
        for (int i = 0; i < 2; ++i) {
            review.now();
            statuses.push_back(review.setDisplayEnabled(secondExternal, true));
        }
    });

    scheduler.runBackgroundJobs();

    EXPECT_EQ(statuses, (std::vector{serverStatus::cannotComplete, serverStatus::success}));
}

TEST_F(RescueReviewTest, WhatTheMainThreadSwitchesOnAtTheEndIsCarriedOut) {
    EXPECT_FALSE(review.now()->isActive(secondExternal));

    EXPECT_EQ(review.setDisplayEnabled(secondExternal, true), serverStatus::success);

    EXPECT_EQ(server.takeChanges(), switchedOn({secondExternal}));
}

}  // namespace
}  // namespace tavrel
