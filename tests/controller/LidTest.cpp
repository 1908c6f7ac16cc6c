#include "platform/LidAwareDisplays.h"
#include "tests/controller/ControllerTest.h"
#include "tests/simulated/SimulatedLid.h"

namespace tavrel {
namespace {

using testing::IsEmpty;

/// A laptop with its lid, which the platform takes into account.
class LidTest : public ControllerTest {
protected:
    /// Before what it uses goes.
    ~LidTest() override {
        release();
        scheduler.shutDown();
    }

    void startLaptopWith(const DisplayIDs& displays) {
        connect(displays);
        Platform platform = system.platform();
        controller = DisplayController::create({.displaySwitch = displaySwitch,
                                                .queries = queries,
                                                .reports = reports,
                                                .userDefaults = platform.userDefaults,
                                                .wallClock = platform.wallClock,
                                                .mainQueue = platform.mainQueue,
                                                .backgroundQueue = platform.backgroundQueue,
                                                .notificationCenter = platform.notificationCenter});
        scheduler.settle();
        server.takeChanges();
    }

    void closeLid() {
        lid.close();
        scheduler.settle();
    }

    void refresh() {
        controller->refresh(std::nullopt);
        scheduler.settle();
    }

    SimulatedLid lid;
    LidAwareQueries queries{server, lid};
    LidAwareReports reports{server, lid};
};

TEST_F(LidTest, TheLastScreenBesideAClosedLidIsNotSwitchedOff) {
    startLaptopWith({panel, firstExternal});
    closeLid();

    set(firstExternal, false);
    scheduler.settle();

    EXPECT_THAT(server.takeChanges(), IsEmpty());
    EXPECT_EQ(status(), "One display must stay on");
}

TEST_F(LidTest, ClosingTheLidBringsAScreenBackSoonerThanTheNextTick) {
    startLaptopWith({panel, firstExternal});
    set(firstExternal, false);
    scheduler.settle();
    server.takeChanges();
    // Just after a tick.
    scheduler.advance(10s - scheduler.now() % 1s + 1ms);
    recordStatuses();

    lid.close();
    scheduler.advance(350ms);

    EXPECT_EQ(server.takeChanges(), switchedOn({panel, firstExternal}));
    scheduler.advance(450ms);
    EXPECT_EQ(status(), recovered);
}

TEST_F(LidTest, ClosingAndOpeningTheLidBesideAScreenThatIsOnSwitchesNothing) {
    startLaptopWith(allThree);
    set(secondExternal, false);
    scheduler.settle();
    server.takeChanges();

    closeLid();
    scheduler.advance(1h);
    lid.open();
    scheduler.advance(1h);

    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(LidTest, ThePanelUnderAClosedLidIsListedAsOff) {
    startLaptopWith({panel, firstExternal});
    closeLid();

    refresh();

    EXPECT_FALSE(listed(panel).isOn);
    EXPECT_EQ(listed(panel).name(), "MacBook Display");
    EXPECT_TRUE(listed(firstExternal).isOn);
}

TEST_F(LidTest, ThePanelUnderAClosedLidIsSwitchedOnWhenAskedFor) {
    startLaptopWith({panel, firstExternal});
    closeLid();
    refresh();

    set(panel, true);
    scheduler.settle();
    EXPECT_EQ(server.takeChanges(), switchedOn({panel}));

    controller->wakeAll();
    scheduler.settle();
    EXPECT_EQ(server.takeChanges(), switchedOn({panel, firstExternal}));
    EXPECT_EQ(status(), "Both displays are on");
}

TEST_F(LidTest, AloneUnderAClosedLidThePanelIsTriedForUntilTheLidIsOpen) {
    startLaptopWith({panel});

    lid.close();
    scheduler.advance(10s);
    EXPECT_GE(server.takeChanges().size(), 5U);
    EXPECT_FALSE(listed(panel).isOn);

    lid.open();
    scheduler.advance(2s);
    server.takeChanges();
    scheduler.advance(1h);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
    refresh();
    EXPECT_TRUE(listed(panel).isOn);
}

}  // namespace
}  // namespace tavrel
