#include "platform/gnome/MonitorState.h"

#include "tests/platform/gnome/SimulatedDisplayConfig.h"

#include <gmock/gmock.h>

namespace tavrel::gnome {
namespace {

TEST(GnomeLayoutTest, HasEveryMonitorWithItsPlace) {
    SimulatedDisplayConfig config;
    config.add("DP-1");
    config.show(0, true);
    config.state.logicalMonitors[0].scale = 2;
    config.state.logicalMonitors[0].transform = 1;
    config.add("eDP-1").isBuiltIn = true;

    const layout::Layout layout = layoutOf(config.state);

    ASSERT_EQ(layout.outputs.size(), 2U);
    EXPECT_EQ(layout.outputs[0].shown->area, (layout::Area{0, 0, 540, 960}));
    EXPECT_EQ(layout.outputs[0].shown->rotation, layout::rotate90);
    EXPECT_EQ(layout.outputs[0].shown->scale, 2);
    EXPECT_EQ(layout.primary, layout.outputs[0].display);
    EXPECT_FALSE(layout.outputs[0].isBuiltIn);
    EXPECT_TRUE(layout.outputs[1].isBuiltIn);
    EXPECT_FALSE(layout.outputs[1].isActive());
    EXPECT_TRUE(layout.outputs[1].isConnected);
}

TEST(GnomeLayoutTest, AScaleLeavesTheAreaAsItIsWhereAllIsInPixels) {
    SimulatedDisplayConfig config;
    config.add("DP-1");
    config.show(0, true);
    config.state.logicalMonitors[0].scale = 2;
    config.state.layoutMode = 2;

    EXPECT_EQ(layoutOf(config.state).outputs[0].shown->area, (layout::Area{0, 0, 1920, 1080}));
}

TEST(GnomeLayoutTest, AMonitorIsKnownByItsNumbers) {
    SimulatedDisplayConfig config;
    Monitor& numbered = config.add("DP-1");
    numbered.vendor = "DEL";
    numbered.product = "0xa0c7";
    numbered.serial = "0x0000002a";
    Monitor& named = config.add("DP-2");
    named.vendor = "?";
    named.product = "A monitor";
    named.serial = "unknown";

    const layout::Layout layout = layoutOf(config.state);

    EXPECT_EQ(layout.outputs[0].identity.edid, (layout::EdidNumbers{0x10AC, 0xA0C7, 42}));
    EXPECT_EQ(layout.outputs[1].identity.edid,
              (layout::EdidNumbers{0, layout::stableHash("A monitor"), 0}));
}

TEST(GnomeLayoutTest, AMonitorThatIsKnownKeepsItsNumberAtAnotherConnector) {
    SimulatedDisplayConfig config;
    config.add("DP-1").serial = "0x1";
    config.add("DP-2").serial = "0x2";
    config.show(0, true);
    const layout::Layout atFirst = layoutOf(config.state);
    config.state.known = layout::identify(identitiesIn(config.state), {}).known;

    std::swap(config.state.monitors[0].connector, config.state.monitors[1].connector);
    config.state.logicalMonitors[0].monitors = {"DP-1"};
    const layout::Layout layout = layoutOf(config.state);

    EXPECT_EQ(layout.outputs[0].display, atFirst.outputs[0].display);
    EXPECT_EQ(layout.outputs[1].display, atFirst.outputs[1].display);
    EXPECT_EQ(layout.primary, atFirst.outputs[1].display);
}

TEST(GnomeLayoutTest, AMonitorIsCalledByMakerAndModel) {
    SimulatedDisplayConfig config;
    Monitor& whole = config.add("DP-1");
    whole.vendor = "ACM";
    whole.product = "27U";
    Monitor& half = config.add("DP-2");
    half.vendor.clear();
    half.product = "27U";

    const layout::Layout layout = layoutOf(config.state);

    EXPECT_EQ(layout.outputs[0].monitor, "ACM 27U");
    EXPECT_EQ(layout.outputs[1].monitor, "27U");
}

}  // namespace
}  // namespace tavrel::gnome
