#include "platform/layout/LayoutMoment.h"

#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

/// A, the panel, is off; B is on; C is driven, though its monitor has been unplugged.
class LayoutMomentTest : public testing::Test {
protected:
    LayoutMomentTest() {
        layout = Desk()
                     .monitor(monitorA)
                     .monitor(monitorB)
                     .at(0, 0)
                     .monitor(monitorC)
                     .at(1920, 0)
                     .unplugged();
        layout.outputs[0].isBuiltIn = true;
        layout.outputs[1].identity.edid = {.vendor = 1, .product = 2, .serial = 3};
        layout.outputs[1].monitor = "ACM 27U";
        layout.outputs[2] = layout.outputs[1];
        layout.outputs[2].display = monitorC;
        layout.outputs[2].isBuiltIn = true;
        layout.outputs[2].isConnected = false;
    }

    std::unique_ptr<DisplayMoment> now() const { return momentOf(layout, true); }

    Layout layout;
};

TEST_F(LayoutMomentTest, BothListsNameWhatIsConnected) {
    EXPECT_THAT(now()->onlineDisplays(), Optional(ElementsAre(monitorA, monitorB)));
    EXPECT_THAT(now()->allDisplays(), Optional(ElementsAre(monitorA, monitorB)));
}

TEST_F(LayoutMomentTest, OfWhatIsConnectedItSaysAllThereIsToSay) {
    EXPECT_TRUE(now()->isOnline(monitorA));
    EXPECT_TRUE(now()->isOnline(monitorB));
    EXPECT_FALSE(now()->isActive(monitorA));
    EXPECT_TRUE(now()->isActive(monitorB));
    EXPECT_TRUE(now()->isBuiltIn(monitorA));
    EXPECT_FALSE(now()->isBuiltIn(monitorB));
    EXPECT_EQ(now()->vendorNumber(monitorB), 1U);
    EXPECT_EQ(now()->modelNumber(monitorB), 2U);
    EXPECT_EQ(now()->serialNumber(monitorB), 3U);
    EXPECT_EQ(now()->hardware(monitorB), (DisplayHardware{"ACM 27U", "B"}));
}

TEST_F(LayoutMomentTest, OfWhatIsNotItSaysNothing) {
    for (const DisplayID display : {monitorC, DisplayID{99}}) {
        EXPECT_FALSE(now()->isOnline(display));
        EXPECT_FALSE(now()->isActive(display));
        EXPECT_FALSE(now()->isBuiltIn(display));
        EXPECT_EQ(now()->vendorNumber(display), 0U);
        EXPECT_EQ(now()->modelNumber(display), 0U);
        EXPECT_EQ(now()->serialNumber(display), 0U);
        EXPECT_EQ(now()->hardware(display), DisplayHardware());
    }
}

TEST_F(LayoutMomentTest, ItIsAsCurrentAsItWasMade) {
    EXPECT_TRUE(now()->isCurrent());
    EXPECT_FALSE(momentOf(layout, false)->isCurrent());
    EXPECT_FALSE(momentOf(std::make_shared<const Layout>(layout), false)->isCurrent());
}

TEST(ShowsAnythingTest, IsWhetherAnyOfThoseThatAreOnlineIsOn) {
    const Desk dark = Desk().monitor(monitorA).monitor(monitorB);

    EXPECT_TRUE(showsAnything(*momentOf(Desk(dark).monitor(monitorC).at(0, 0), true)));
    EXPECT_FALSE(showsAnything(*momentOf(dark, true)));
    EXPECT_FALSE(showsAnything(*momentOf(Desk(dark).monitor(monitorC).at(0, 0).unplugged(), true)));
    EXPECT_FALSE(showsAnything(*silentMoment(std::nullopt, true)));
}

TEST(SilentMomentTest, KnowsNothingButTheList) {
    const auto silent = silentMoment(std::nullopt, false);
    EXPECT_FALSE(silent->isCurrent());
    EXPECT_EQ(silent->onlineDisplays(), std::nullopt);
    EXPECT_EQ(silent->allDisplays(), std::nullopt);

    const auto empty = silentMoment(std::vector<DisplayID>{}, true);
    EXPECT_TRUE(empty->isCurrent());
    EXPECT_THAT(empty->onlineDisplays(), Optional(IsEmpty()));
    EXPECT_EQ(empty->allDisplays(), std::nullopt);
    EXPECT_FALSE(empty->isOnline(monitorA));
    EXPECT_FALSE(empty->isActive(monitorA));
    EXPECT_FALSE(empty->isBuiltIn(monitorA));
    EXPECT_EQ(empty->vendorNumber(monitorA), 0U);
    EXPECT_EQ(empty->modelNumber(monitorA), 0U);
    EXPECT_EQ(empty->serialNumber(monitorA), 0U);
}

}  // namespace
}  // namespace tavrel::layout
