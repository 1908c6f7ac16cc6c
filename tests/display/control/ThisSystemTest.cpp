// The library with what this system has, be it all or nothing.
#include <gmock/gmock.h>

#include "display/control/DisplayControl.h"

namespace tavrel {
namespace {

constexpr std::int32_t unavailable = 1006;

TEST(DisplayControlOnThisSystem, IsThereExactlyWhenItsCallIs) {
    EXPECT_EQ(DCTLCanControlDisplays(), resolveConfigureDisplayEnabled() != nullptr);
}

TEST(DisplayControlOnThisSystem, ListsNoMoreDisplaysThanThereIsRoomFor) {
    constexpr std::uint32_t untouched = 0xABCDABCD;
    std::uint32_t displays[] = {untouched, untouched};
    std::uint32_t count = 7;

    const std::int32_t status = DCTLGetDisplayList(1, displays, &count);

    EXPECT_EQ(displays[1], untouched);
    EXPECT_EQ(status == unavailable, resolveGetDisplayList() == nullptr);
    if (status == unavailable) {
        EXPECT_EQ(displays[0], untouched);
        EXPECT_EQ(count, 7U);
    }
}

}  // namespace
}  // namespace tavrel
