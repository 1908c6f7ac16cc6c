// A Mac that has the entry points in its private framework only, by their newer names. What
// a process has looked up it keeps, so this is a process of its own.
#include <array>

#include "platform/macos/MacWindowServer.h"
#include "tests/platform/macos/MacFixture.h"

namespace tavrel {
namespace {

using simulatedMac::takeCalls;
using testing::ElementsAre;
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
    EXPECT_TRUE(server.canControlDisplays());
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 0);
    EXPECT_FALSE(isOn(mac, monitor));
    std::array<DisplayID, 4> displays{};
    std::uint32_t count = 0;
    EXPECT_EQ(server.getDisplayList(4, displays.data(), &count), 0);
    EXPECT_EQ(count, 3U);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "SLSConfigureDisplayEnabled(2, 0)",
                            "CGCompleteDisplayConfiguration(2)", "SLSGetDisplayList(4)"));
}

}  // namespace
}  // namespace tavrel
