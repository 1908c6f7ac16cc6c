#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/SwitchOffGate.h"
#include "tests/simulated/SimulatedWindowServer.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::Pair;

class SwitchOffGateTest : public testing::Test {
protected:
    SwitchOffGateTest() { server.connect({.id = 7}); }

    SimulatedWindowServer server;
    SwitchOffGate gate{server};
};

TEST_F(SwitchOffGateTest, AnOpenGatePassesEveryRequestAndAnswer) {
    EXPECT_TRUE(gate.canSwitch());
    EXPECT_EQ(gate.setDisplayEnabled(7, false), 0);
    EXPECT_EQ(gate.setDisplayEnabled(8, false), 1001);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(7, false), Pair(8, false)));
}

TEST_F(SwitchOffGateTest, AClosedGateStillSwitchesOnButNothingOff) {
    gate.close();

    EXPECT_TRUE(gate.waitUntilIdle(std::chrono::milliseconds::zero()));
    EXPECT_EQ(gate.setDisplayEnabled(7, false), 1004);
    EXPECT_EQ(gate.setDisplayEnabled(7, true), 0);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(7, true)));
}

}  // namespace
}  // namespace tavrel
