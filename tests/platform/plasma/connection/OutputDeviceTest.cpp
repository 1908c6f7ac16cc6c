#include "platform/plasma/connection/OutputDevice.h"

#include <gmock/gmock.h>

namespace tavrel::plasma {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Base64Test, IsDecodedWhole) {
    EXPECT_THAT(decodeBase64("AP//"), ElementsAre(0x00, 0xFF, 0xFF));
    EXPECT_THAT(decodeBase64("TWE="), ElementsAre('M', 'a'));
    EXPECT_THAT(decodeBase64("TQ=="), ElementsAre('M'));
    EXPECT_THAT(decodeBase64("+/+/"), ElementsAre(0xFB, 0xFF, 0xBF));
}

TEST(Base64Test, IsNothingWhereItIsNone) {
    for (const char* text : {"", "A", "AB", "ABC", "A===", "====", "A\nBC", "AB=C", "AB?="}) {
        EXPECT_THAT(decodeBase64(text), IsEmpty()) << text;
    }
}

TEST(TransformTest, IsARotation) {
    EXPECT_EQ(rotationOf(0), layout::rotate0);
    EXPECT_EQ(rotationOf(1), layout::rotate90);
    EXPECT_EQ(rotationOf(3), layout::rotate270);
    EXPECT_EQ(rotationOf(4), layout::rotate0 | layout::reflectX);
    EXPECT_EQ(rotationOf(7), layout::rotate270 | layout::reflectX);
    EXPECT_EQ(rotationOf(-1), layout::rotate0);
    EXPECT_EQ(rotationOf(8), layout::rotate0);
}

TEST(TransformTest, ThereAndBackIsTheSame) {
    for (int transform = 0; transform < 8; ++transform) {
        EXPECT_EQ(transformOf(rotationOf(transform)), transform);
    }
}

TEST(TransformTest, ReflectionAtTheOtherAxisIsOneWithHalfATurn) {
    EXPECT_EQ(transformOf(layout::rotate0 | layout::reflectY), 6);
    EXPECT_EQ(transformOf(layout::rotate90 | layout::reflectY), 7);
    EXPECT_EQ(transformOf(layout::rotate0 | layout::reflectX | layout::reflectY), 2);
}

}  // namespace
}  // namespace tavrel::plasma
