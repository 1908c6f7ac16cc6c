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

}  // namespace
}  // namespace tavrel::plasma
