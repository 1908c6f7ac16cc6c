#include "platform/LastDisplayGate.h"

#include <gmock/gmock.h>

#include <future>

#include "platform/LidAwareDisplays.h"
#include "tests/simulated/SimulatedLid.h"
#include "tests/simulated/SimulatedWindowServer.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class LastDisplayGateTest : public testing::Test {
protected:
    static constexpr DisplayID panel = 5;
    static constexpr DisplayID external = 1;
    static constexpr DisplayID otherExternal = 3;

    LastDisplayGateTest() {
        server.connect({.id = panel, .builtIn = true});
        server.connect({.id = external});
        server.connect({.id = otherExternal});
    }

    SimulatedWindowServer server;
    SimulatedLid lid;
    LidAwareQueries queries{server, lid};
    LastDisplayGate gate{server, queries};
};

TEST_F(LastDisplayGateTest, PassesOnWhatLeavesAnotherDisplayOn) {
    EXPECT_TRUE(gate.canSwitch());
    EXPECT_EQ(gate.setDisplayEnabled(panel, false), 0);
    EXPECT_EQ(gate.setDisplayEnabled(external, false), 0);
    EXPECT_EQ(gate.setDisplayEnabled(9, false), 1001);

    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(panel, false), Pair(external, false), Pair(9, false)));
}

TEST_F(LastDisplayGateTest, RefusesToSwitchTheLastOneOff) {
    server.switchFromOutside(panel, false);
    server.switchFromOutside(external, false);

    EXPECT_EQ(gate.setDisplayEnabled(otherExternal, false), 1004);
    EXPECT_THAT(server.takeChanges(), IsEmpty());

    EXPECT_EQ(gate.setDisplayEnabled(panel, true), 0);
    EXPECT_EQ(gate.setDisplayEnabled(otherExternal, false), 0);
}

TEST_F(LastDisplayGateTest, DoesNotCountThePanelUnderAClosedLid) {
    lid.close();

    EXPECT_EQ(gate.setDisplayEnabled(external, false), 0);
    EXPECT_EQ(gate.setDisplayEnabled(otherExternal, false), 1004);

    lid.open();
    EXPECT_EQ(gate.setDisplayEnabled(otherExternal, false), 0);
}

TEST_F(LastDisplayGateTest, LeavesItToTheServerWhichCannotSayWhatIsOnline) {
    server.switchFromOutside(panel, false);
    server.switchFromOutside(external, false);
    server.setHasOnlineList(false);

    EXPECT_EQ(gate.setDisplayEnabled(otherExternal, false), 0);
}

/// A server that takes its time over a change, until it is told to go on.
class SlowServer : public DisplaySwitch {
public:
    explicit SlowServer(DisplaySwitch& inner) : inner_(inner) {}

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        if (!hasBegun_) {
            hasBegun_ = true;
            begun.set_value();
            goesOn.get_future().wait();
        }
        return inner_.setDisplayEnabled(display, enabled);
    }

    std::promise<void> begun;
    std::promise<void> goesOn;

private:
    DisplaySwitch& inner_;
    bool hasBegun_ = false;
};

TEST_F(LastDisplayGateTest, DecidesByWhatTheRequestBeforeHasLeft) {
    server.switchFromOutside(panel, false);
    SlowServer slow(server);
    LastDisplayGate slowGate(slow, queries);

    auto first =
        std::async(std::launch::async, [&] { return slowGate.setDisplayEnabled(external, false); });
    slow.begun.get_future().wait();
    std::promise<void> secondIsThere;
    auto second = std::async(std::launch::async, [&] {
        secondIsThere.set_value();
        return slowGate.setDisplayEnabled(otherExternal, false);
    });
    secondIsThere.get_future().wait();
    slow.goesOn.set_value();

    EXPECT_EQ(first.get(), 0);
    EXPECT_EQ(second.get(), 1004);
    EXPECT_TRUE(server.isLive(otherExternal));
}

}  // namespace
}  // namespace tavrel
