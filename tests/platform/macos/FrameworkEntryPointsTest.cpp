// A Mac that has the entry points in its private framework only, by their newer names. What
// a process has looked up it keeps, so this is a process of its own.
#include "platform/macos/MacWindowServer.h"
#include "tests/platform/macos/MacFixture.h"

namespace tavrel {
namespace {

using simulatedMac::takeCalls;
using testing::ElementsAre;
using testing::Optional;
using testing::SizeIs;
using testing::StartsWith;
namespace entryPoint = simulatedMac::entryPoint;

class FrameworkEntryPointsTest : public MacFixture {
protected:
    FrameworkEntryPointsTest()
        : MacFixture({.inProcess = entryPoint::slsConfigure,
                      .hasFramework = true,
                      .inFramework = entryPoint::slsConfigure | entryPoint::slsList}) {}
};

TEST_F(FrameworkEntryPointsTest, areUsedByTheirNewerNames) {
    MacWindowServer server;
    EXPECT_THAT(takeCalls(), ElementsAre(StartsWith("dlopen(/System/Library/")));
    EXPECT_TRUE(server.canSwitch());
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 0);
    EXPECT_FALSE(isOn(mac, monitor));
    EXPECT_THAT(server.now()->allDisplays(), Optional(SizeIs(3)));
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "SLSConfigureDisplayEnabled(2, 0)",
                            "CGCompleteDisplayConfiguration(2)", "SLSGetDisplayList(64)"));
}

}  // namespace
}  // namespace tavrel
