#include "display/DisplayDevice.h"

#include <gtest/gtest.h>

#include <concepts>
#include <functional>

namespace tavrel {
namespace {

using Kind = DisplayDevice::Kind;

TEST(DisplayDevice, IdIsThePlainDecimalIdentifier) {
    EXPECT_EQ(DisplayDevice(1, "External Display", Kind::external, true).id(), "1");
    EXPECT_EQ(DisplayDevice(0, "External Display", Kind::external, true).id(), "0");
    EXPECT_EQ(DisplayDevice(1234567, "External Display", Kind::external, true).id(), "1234567");
}

TEST(DisplayDevice, IdOfTheLargestIdentifierIsUnsigned) {
    const DisplayDevice display(4294967295, "External Display", Kind::external, true);

    EXPECT_EQ(display.id(), "4294967295");
    EXPECT_EQ(display.displayID(), 4294967295U);
}

TEST(DisplayDevice, HoldsWhatItWasMadeWithAndIsNotBusy) {
    const DisplayDevice on(7, "MacBook Display", Kind::builtIn, true);
    EXPECT_EQ(on.displayID(), 7U);
    EXPECT_EQ(on.name(), "MacBook Display");
    EXPECT_EQ(on.kind(), Kind::builtIn);
    EXPECT_TRUE(on.isOn);
    EXPECT_FALSE(on.isBusy);

    const DisplayDevice off(8, "External Display", Kind::external, false);
    EXPECT_EQ(off.kind(), Kind::external);
    EXPECT_FALSE(off.isOn);
    EXPECT_FALSE(off.isBusy);
}

TEST(DisplayDevice, SameDisplayAtDifferentTimesHasTheSameId) {
    const DisplayDevice on(7, "External Display", Kind::external, true);
    const DisplayDevice off(7, "External Display 2", Kind::external, false);

    EXPECT_EQ(on.id(), off.id());
}

TEST(DisplayDevice, CopiesAreIndependent) {
    DisplayDevice display(7, "External Display", Kind::external, true);
    DisplayDevice copy = display;
    copy.isOn = false;
    copy.isBusy = true;

    EXPECT_TRUE(display.isOn);
    EXPECT_FALSE(display.isBusy);
    display = copy;
    EXPECT_TRUE(display.isBusy);
}

template <class Value>
constexpr bool isHashable = requires(const Value& value) {
    std::hash<Value>{}(value);
};

// A comparison of whole values would tell the same display at two times apart.
TEST(DisplayDevice, IsNotComparedOrHashedAsAWhole) {
    EXPECT_FALSE(std::equality_comparable<DisplayDevice>);
    EXPECT_FALSE(isHashable<DisplayDevice>);

    EXPECT_TRUE(std::equality_comparable<Kind>);
    EXPECT_TRUE(isHashable<Kind>);
}

TEST(DisplayDevice, BuiltInIsTheFirstKind) {
    EXPECT_EQ(static_cast<int>(Kind::builtIn), 0);
    EXPECT_EQ(static_cast<int>(Kind::external), 1);
}

}  // namespace
}  // namespace tavrel
