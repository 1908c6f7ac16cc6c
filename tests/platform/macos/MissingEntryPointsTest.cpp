// A Mac without the private entry points. What a process has looked up it keeps, so this is
// a process of its own.
#include "platform/macos/MacWindowServer.h"
#include "tests/platform/macos/MacFixture.h"

namespace tavrel {
namespace {

using simulatedMac::takeCalls;
using testing::ElementsAre;
using testing::IsEmpty;

class MissingEntryPointsTest : public MacFixture {
protected:
    MissingEntryPointsTest()
        : MacFixture({.inProcess = 0, .hasFramework = true, .inFramework = 0}) {}
};

TEST_F(MissingEntryPointsTest, noTransactionBegins) {
    MacWindowServer server;
    EXPECT_THAT(takeCalls(),
                ElementsAre("dlopen(/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight, "
                            "5)"));
    EXPECT_FALSE(server.canSwitch());
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 1006);
    EXPECT_EQ(server.setDisplayEnabled(monitor, true), 1006);
    EXPECT_EQ(server.now()->allDisplays(), std::nullopt);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_TRUE(isOn(mac, monitor));
}

}  // namespace
}  // namespace tavrel
