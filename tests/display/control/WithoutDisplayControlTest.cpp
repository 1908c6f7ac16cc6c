// The library where the system offers no display control: no entry points, no transactions.
#include <gmock/gmock.h>

#include "display/control/DisplayControl.h"
#include "display/control/DisplayTransaction.h"

namespace tavrel {
namespace {

TEST(WithoutDisplayControl, ReportsThatThereIsNoDisplayControl) {
    ASSERT_EQ(&CGBeginDisplayConfiguration, nullptr);

    EXPECT_FALSE(DCTLCanControlDisplays());
    EXPECT_EQ(DCTLSetDisplayEnabled(1, true), 1006);
    EXPECT_EQ(DCTLSetDisplayEnabled(1, false), 1006);
    EXPECT_EQ(resolveConfigureDisplayEnabled(), nullptr);
    EXPECT_EQ(openSkyLight(), nullptr);
}

TEST(WithoutDisplayControl, HasNoListAndTouchesNeitherArrayNorCount) {
    std::uint32_t displays[] = {5, 6};
    std::uint32_t count = 9;

    EXPECT_EQ(DCTLGetDisplayList(2, displays, &count), 1006);
    EXPECT_EQ(count, 9U);
    EXPECT_THAT(displays, testing::ElementsAre(5, 6));
    EXPECT_EQ(resolveGetDisplayList(), nullptr);
}

}  // namespace
}  // namespace tavrel
