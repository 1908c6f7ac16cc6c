#include <gmock/gmock.h>

#include <limits>
#include <string>

#include "registry/StoredFormat.h"

namespace tavrel {
namespace {

using namespace std::string_literals;
using StoredFormat::decode;
using testing::ElementsAre;
using testing::Optional;

constexpr auto highestID = std::numeric_limits<DisplayID>::max();

/// A list of one record whose other two members are in order.
std::string withID(const std::string& id) {
    return R"([{"id":)" + id + R"(,"isBuiltIn":true,"lastSeenAt":5.5}])";
}
std::string withBuiltIn(const std::string& isBuiltIn) {
    return R"([{"id":1,"isBuiltIn":)" + isBuiltIn + R"(,"lastSeenAt":5.5}])";
}
std::string withTime(const std::string& lastSeenAt) {
    return R"([{"id":1,"isBuiltIn":true,"lastSeenAt":)" + lastSeenAt + "}]";
}
std::string withExtra(const std::string& members) {
    return R"([{"id":1,"isBuiltIn":true,"lastSeenAt":5.5,)" + members + "}]";
}

const StoredDisplay plain{1, true, {5.5}};

TEST(StoredFormatDecode, ReadsRecordsInStoredOrder) {
    EXPECT_THAT(
        decode(R"([{"id":9,"isBuiltIn":false,"lastSeenAt":1.25},)"
               R"({"id":2,"isBuiltIn":true,"lastSeenAt":-3}])"),
        Optional(ElementsAre(StoredDisplay{9, false, {1.25}}, StoredDisplay{2, true, {-3}})));
}

TEST(StoredFormatDecode, ReadsAnEmptyList) {
    EXPECT_THAT(decode("[]"), Optional(ElementsAre()));
}

TEST(StoredFormatDecode, KeepsRepeatedIdentifiers) {
    EXPECT_THAT(decode(R"([{"id":1,"isBuiltIn":true,"lastSeenAt":5.5},)"
                       R"({"id":1,"isBuiltIn":true,"lastSeenAt":5.5}])"),
                Optional(ElementsAre(plain, plain)));
}

TEST(StoredFormatDecode, AcceptsAnyMemberOrderAndWhiteSpace) {
    EXPECT_THAT(decode("\t[ {\"lastSeenAt\" : 5.5,\r\n\"isBuiltIn\":true , \"id\":1} ]\n"),
                Optional(ElementsAre(plain)));
}

TEST(StoredFormatDecode, ReadsEscapedMemberNames) {
    EXPECT_THAT(decode(R"([{"\u0069d":1,"isBuiltIn":true,"lastSeenAt":5.5}])"),
                Optional(ElementsAre(plain)));
}

TEST(StoredFormatDecode, IgnoresUnknownMembersWhateverTheyHold) {
    for (const std::string members :
         {R"("extra":null)", R"("extra":"text")", R"("extra":true)", R"("extra":-1)",
          R"("extra":1.5)", R"("extra":[])", R"("extra":{})", R"("ID":"1")",
          R"("extra":[null,"x",false,7,-7,7.5,{"id":"no","lastSeenAt":[{"isBuiltIn":0}]}])",
          R"("extra":{"id":2,"isBuiltIn":false,"lastSeenAt":0})"}) {
        EXPECT_THAT(decode(withExtra(members)), Optional(ElementsAre(plain))) << members;
    }
}

TEST(StoredFormatDecode, OfARepeatedMemberOnlyTheLastCounts) {
    EXPECT_THAT(decode(withExtra(R"("id":2,"isBuiltIn":false,"lastSeenAt":7)")),
                Optional(ElementsAre(StoredDisplay{2, false, {7}})));
    EXPECT_THAT(decode(R"([{"id":null,"id":1,"isBuiltIn":0,"isBuiltIn":true,)"
                       R"("lastSeenAt":"5","lastSeenAt":5.5}])"),
                Optional(ElementsAre(plain)));
}

TEST(StoredFormatDecode, TheLastOfARepeatedMemberMustBeOfItsType) {
    for (const std::string member :
         {R"("id":null)", R"("id":"1")", R"("id":true)", R"("id":[])", R"("isBuiltIn":1)",
          R"("isBuiltIn":{})", R"("lastSeenAt":null)", R"("lastSeenAt":false)"}) {
        EXPECT_EQ(decode(withExtra(member)), std::nullopt) << member;
    }
}

TEST(StoredFormatDecode, ReadsTheWholeRangeOfIdentifiers) {
    EXPECT_THAT(decode(withID("0")), Optional(ElementsAre(StoredDisplay{0, true, {5.5}})));
    EXPECT_THAT(decode(withID("4294967295")),
                Optional(ElementsAre(StoredDisplay{highestID, true, {5.5}})));
}

TEST(StoredFormatDecode, ReadsAnIdentifierFromAnyNumberWithAnIntegerValue) {
    for (const std::string id : {"1.0", "1e0", "1.0e0", "10E-1", "0.1e1"}) {
        EXPECT_THAT(decode(withID(id)), Optional(ElementsAre(plain))) << id;
    }
    EXPECT_THAT(decode(withID("4294967295.0")),
                Optional(ElementsAre(StoredDisplay{highestID, true, {5.5}})));
    EXPECT_THAT(decode(withID("-0")), Optional(ElementsAre(StoredDisplay{0, true, {5.5}})));
}

TEST(StoredFormatDecode, ReadsATimeFromAnyNumber) {
    const std::pair<std::string, double> times[] = {
        {"0", 0},
        {"-1", -1},
        {"786000000", 786e6},
        {"786000000.123456", 786000000.123456},
        {"7.86e8", 786e6},
        {"18446744073709551615", 18446744073709551615.0},
        {"18446744073709551616", 18446744073709551616.0},
        {"1.7976931348623157e308", std::numeric_limits<double>::max()},
        {"1e-999", 0},
    };
    for (const auto& [text, time] : times) {
        EXPECT_THAT(decode(withTime(text)), Optional(ElementsAre(StoredDisplay{1, true, {time}})))
            << text;
    }
}

TEST(StoredFormatDecode, RefusesWhatIsNotOneJSONArray) {
    for (const std::string& text : {""s,
                                    " "s,
                                    "null"s,
                                    "true"s,
                                    "1"s,
                                    "-1"s,
                                    "1.5"s,
                                    R"("1")"s,
                                    "{}"s,
                                    "["s,
                                    "]"s,
                                    "[,]"s,
                                    "[]]"s,
                                    "[][]"s,
                                    "[] x"s,
                                    "[],"s,
                                    "[]\0"s,
                                    "[]\0 "s,
                                    "\0[]"s,
                                    "[]\xff"s,
                                    "[] // end"s,
                                    "/**/[]"s,
                                    R"({"id":1,"isBuiltIn":true,"lastSeenAt":5.5})"s,
                                    withID("1") + "\0x"s,
                                    withID("1") + "0"}) {
        EXPECT_EQ(decode(text), std::nullopt) << text;
    }
}

TEST(StoredFormatDecode, RefusesElementsThatAreNotObjects) {
    for (const std::string element : {"null", "true", "1", "-1", "1.5", R"("1")", "[]"}) {
        EXPECT_EQ(decode("[" + element + "]"), std::nullopt) << element;
    }
}

TEST(StoredFormatDecode, RefusesAllWhenOneMemberIsMissing) {
    for (const std::string element :
         {R"({})", R"({"isBuiltIn":true,"lastSeenAt":5.5})", R"({"id":1,"lastSeenAt":5.5})",
          R"({"id":1,"isBuiltIn":true})", R"({"ID":1,"isBuiltIn":true,"lastSeenAt":5.5})"}) {
        EXPECT_EQ(decode("[" + element + "]"), std::nullopt) << element;
        // What an earlier record had does not count for a later one.
        std::string second = withID("1");
        second.replace(second.size() - 1, 1, "," + element + "]");
        EXPECT_EQ(decode(second), std::nullopt) << second;
    }
}

TEST(StoredFormatDecode, RefusesIdentifiersOutOfRangeOrOfAnotherType) {
    for (const std::string id : {"-1", "-9223372036854775808", "4294967296", "4294967296.0",
                                 "18446744073709551615", "18446744073709551616", "-0.5", "1.5",
                                 "1e-1", "1e300", "null", "true", R"("1")", "[]", "[1]", "{}"}) {
        EXPECT_EQ(decode(withID(id)), std::nullopt) << id;
    }
}

TEST(StoredFormatDecode, RefusesABuiltInAnswerOfAnotherType) {
    for (const std::string answer : {"null", "0", "1", "-1", "1.5", R"("true")", "[]", "{}"}) {
        EXPECT_EQ(decode(withBuiltIn(answer)), std::nullopt) << answer;
    }
}

TEST(StoredFormatDecode, RefusesTimesOutOfRangeOrOfAnotherType) {
    for (const std::string time :
         {"1e999", "-1e999", "null", "true", R"("5.5")", "[]", "{}", "NaN", "Infinity"}) {
        EXPECT_EQ(decode(withTime(time)), std::nullopt) << time;
    }
}

TEST(StoredFormatDecode, RefusesBadJSONEvenInIgnoredMembers) {
    for (const std::string& value :
         {"1e999"s, "01"s, "+1"s, ".5"s, "1."s, "nul"s, "\"\xff\""s, "\"\xc0\xaf\""s,
          "\"\xed\xa0\x80\""s, "\"\xf4\x90\x80\x80\""s, "\"\xe2\x82\""s, R"("\ud800")"s, R"("\x")"s,
          "\"\n\""s, "'text'"s, "[1,]"s, R"({"a":1,})"s, R"({"a"})"s, "\"\0\""s}) {
        EXPECT_EQ(decode(withExtra(R"("extra":)" + value)), std::nullopt) << value;
    }
}

TEST(StoredFormatDecode, ReadsNestingOf512LevelsAndNoDeeper) {
    const auto nested = [](std::size_t levels, const char* open, const char* close) {
        constexpr std::size_t listAndRecord = 2;
        std::string value;
        for (std::size_t i = listAndRecord; i < levels; ++i) {
            value += open;
        }
        value += "0";
        for (std::size_t i = listAndRecord; i < levels; ++i) {
            value += close;
        }
        return withExtra(R"("extra":)" + value);
    };
    EXPECT_THAT(decode(nested(512, "[", "]")), Optional(ElementsAre(plain)));
    EXPECT_THAT(decode(nested(512, R"({"a":)", "}")), Optional(ElementsAre(plain)));
    EXPECT_EQ(decode(nested(513, "[", "]")), std::nullopt);
    EXPECT_EQ(decode(nested(513, R"({"a":)", "}")), std::nullopt);
}

TEST(StoredFormatDecode, BracketsSideBySideOrInTextAreNoNesting) {
    std::string sideBySide = "[[]";
    std::string inText = R"("\\)";
    for (int i = 0; i < 1000; ++i) {
        sideBySide += R"(,[],{})";
        inText += R"(\"[{)";
    }

    EXPECT_THAT(decode(withExtra(R"("extra":)" + sideBySide + "]")), Optional(ElementsAre(plain)));
    EXPECT_THAT(decode(withExtra(R"("extra":)" + inText + '"')), Optional(ElementsAre(plain)));
}

TEST(StoredFormatDecode, SurvivesNestingWithoutEnd) {
    constexpr std::size_t levels = 5'000'000;
    EXPECT_EQ(decode(std::string(levels, '[')), std::nullopt);
    EXPECT_EQ(decode(withExtra(R"("extra":)" + std::string(levels, '['))), std::nullopt);
    EXPECT_EQ(decode(withExtra(R"("extra":)" + std::string(levels, '{'))), std::nullopt);
}

TEST(StoredFormatDecode, RefusesEveryTruncation) {
    const std::string whole = withExtra(R"("extra":[{"a":"\u00e9"}])");
    ASSERT_NE(decode(whole), std::nullopt);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(decode(whole.substr(0, length)), std::nullopt) << whole.substr(0, length);
    }
}

TEST(StoredFormatDecode, WhateverOneDamagedByteLeavesReadableIsStoredAndReadTheSame) {
    const std::string whole = withExtra(R"("extra":[{"a":"\u00e9"},-1.5e3])");
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string damaged = whole;
            damaged[at] = static_cast<char>(byte);
            if (const auto records = decode(damaged)) {
                const auto again = StoredFormat::encode(*records);
                ASSERT_TRUE(again.has_value()) << damaged;
                EXPECT_EQ(decode(*again), records) << damaged;
            }
        }
    }
}

}  // namespace
}  // namespace tavrel
