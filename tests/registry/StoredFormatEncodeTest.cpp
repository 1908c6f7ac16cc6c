#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "registry/StoredDisplay.h"

namespace tavrel {
namespace {

using StoredFormat::decode;
using StoredFormat::encode;
using testing::ElementsAre;
using testing::Optional;

std::string timeText(double time) {
    const std::string text = encode({{1, false, {time}}}).value_or("");
    const std::string prefix = R"([{"id":1,"isBuiltIn":false,"lastSeenAt":)";
    EXPECT_TRUE(text.starts_with(prefix) && text.ends_with("}]")) << text;
    return text.substr(prefix.size(), text.size() - prefix.size() - 2);
}

TEST(StoredFormatEncode, WritesCompactRecordsInOrderWithMembersInOrder) {
    EXPECT_EQ(encode({{4294967295, false, {786000000.5}}, {1, true, {0}}}),
              R"([{"id":4294967295,"isBuiltIn":false,"lastSeenAt":786000000.5},)"
              R"({"id":1,"isBuiltIn":true,"lastSeenAt":0}])");
}

TEST(StoredFormatEncode, WritesAnEmptyList) {
    EXPECT_EQ(encode({}), "[]");
}

TEST(StoredFormatEncode, WritesTimesInTheirShortestForm) {
    EXPECT_EQ(timeText(0.1), "0.1");
    EXPECT_EQ(timeText(786000000.123456), "786000000.123456");
    EXPECT_EQ(timeText(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(timeText(-12.5), "-12.5");
}

TEST(StoredFormatEncode, WritesOrdinaryTimesWithoutAnExponent) {
    EXPECT_EQ(timeText(800'000'000), "800000000");
    EXPECT_EQ(timeText(-1e9), "-1000000000");
    EXPECT_EQ(timeText(9'999'999'999'999'998), "9999999999999998");
    EXPECT_EQ(timeText(0.0001), "0.0001");
}

TEST(StoredFormatEncode, WritesEndsOfTheRangeWithAnExponent) {
    EXPECT_EQ(timeText(1e16), "1e+16");
    EXPECT_EQ(timeText(0.00001), "1e-05");
    EXPECT_EQ(timeText(-std::numeric_limits<double>::max()), "-1.7976931348623157e+308");
    EXPECT_EQ(timeText(std::numeric_limits<double>::denorm_min()), "5e-324");
}

TEST(StoredFormatEncode, RefusesTimesThatAreNotFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double time : {infinity, -infinity, std::nan("")}) {
        EXPECT_EQ(encode({{1, true, {time}}}), std::nullopt);
        EXPECT_EQ(encode({{1, true, {0}}, {2, true, {time}}, {3, true, {0}}}), std::nullopt);
    }
}

TEST(StoredFormatEncode, EveryFiniteTimeReadsBackTheSame) {
    std::mt19937_64 random(20010101);
    for (int i = 0; i < 100'000; ++i) {
        const auto time = std::bit_cast<double>(random());
        if (!std::isfinite(time)) {
            continue;
        }
        const StoredDisplay record{static_cast<DisplayID>(random()), (random() & 1) != 0, {time}};
        const auto text = encode({record});
        ASSERT_TRUE(text.has_value()) << time;
        ASSERT_THAT(decode(*text), Optional(ElementsAre(record))) << *text;
    }
}

TEST(StoredFormatEncode, EveryDayOfACenturyReadsBackTheSameWithoutAnExponent) {
    std::mt19937_64 random(2001);
    std::uniform_real_distribution<double> withinADay(0, 86'400);
    for (int day = 0; day < 36'525; ++day) {
        const double time = day * 86'400.0 + withinADay(random);
        const std::string text = timeText(time);
        ASSERT_EQ(text.find_first_of("eE"), std::string::npos) << text;
        ASSERT_EQ(std::stod(text), time) << text;
    }
}

}  // namespace
}  // namespace tavrel
