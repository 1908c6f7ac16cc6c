#include <gmock/gmock.h>

#include <limits>
#include <string>

#include "registry/StoredDisplay.h"

namespace tavrel {
namespace {

using namespace std::string_literals;
using StoredFormat::decode;
using testing::ElementsAre;
using testing::Optional;

constexpr auto highestID = std::numeric_limits<DisplayID>::max();

/// Lists of one record, in which one thing varies.
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
std::string withUnknown(const std::string& value) {
    return withExtra(R"("unknown":)" + value);
}

std::string listOf(const std::string& element) {
    return "[" + element + "]";
}
std::string justThat(const std::string& text) {
    return text;
}

std::string repeated(std::size_t count, const std::string& text) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

const StoredDisplay plain{1, true, {5.5}};

/// Matches these decoded records and no others.
template <class... Record>
auto are(Record... records) {
    return Optional(ElementsAre(records...));
}

/// Expects that no text that `textWith` makes from one of `values` can be decoded.
void expectRefused(std::string (*textWith)(const std::string&),
                   const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        EXPECT_EQ(decode(textWith(value)), std::nullopt) << value;
    }
}

TEST(StoredFormatDecode, ReadsRecordsInStoredOrder) {
    EXPECT_THAT(decode(R"([{"id":9,"isBuiltIn":false,"lastSeenAt":1.25},)"
                       R"({"id":2,"isBuiltIn":true,"lastSeenAt":-3}])"),
                are(StoredDisplay{9, false, {1.25}}, StoredDisplay{2, true, {-3}}));
}

TEST(StoredFormatDecode, ReadsAnEmptyList) {
    EXPECT_THAT(decode("[]"), are());
}

TEST(StoredFormatDecode, KeepsRepeatedIdentifiers) {
    EXPECT_THAT(decode(R"([{"id":1,"isBuiltIn":true,"lastSeenAt":5.5},)"
                       R"({"id":1,"isBuiltIn":true,"lastSeenAt":5.5}])"),
                are(plain, plain));
}

TEST(StoredFormatDecode, AcceptsAnyMemberOrderAndWhiteSpace) {
    EXPECT_THAT(decode("\t[ {\"lastSeenAt\" : 5.5,\r\n\"isBuiltIn\":true , \"id\":1} ]\n"),
                are(plain));
}

TEST(StoredFormatDecode, ReadsEscapedMemberNames) {
    EXPECT_THAT(decode(R"([{"\u0069d":1,"isBuiltIn":true,"lastSeenAt":5.5}])"), are(plain));
}

TEST(StoredFormatDecode, IgnoresUnknownMembersWhateverTheyHold) {
    for (const std::string value :
         {"null", R"("text")", "true", "-1", "1.5", "[]", "{}",
          R"([null,"x",false,7,-7,7.5,{"id":"no","lastSeenAt":[{"isBuiltIn":0}]}])",
          R"({"id":2,"isBuiltIn":false,"lastSeenAt":0})"}) {
        EXPECT_THAT(decode(withUnknown(value)), are(plain)) << value;
    }
    EXPECT_THAT(decode(withExtra(R"("ID":"1")")), are(plain));
}

TEST(StoredFormatDecode, OfARepeatedMemberOnlyTheLastCounts) {
    EXPECT_THAT(decode(withExtra(R"("id":2,"isBuiltIn":false,"lastSeenAt":7)")),
                are(StoredDisplay{2, false, {7}}));
    EXPECT_THAT(decode(R"([{"id":null,"id":1,"isBuiltIn":0,"isBuiltIn":true,)"
                       R"("lastSeenAt":"5","lastSeenAt":5.5}])"),
                are(plain));
}

TEST(StoredFormatDecode, TheLastOfARepeatedMemberMustBeOfItsType) {
    expectRefused(withExtra,
                  {R"("id":null)", R"("id":"1")", R"("id":true)", R"("id":[])", R"("isBuiltIn":1)",
                   R"("isBuiltIn":{})", R"("lastSeenAt":null)", R"("lastSeenAt":false)"});
}

TEST(StoredFormatDecode, ReadsTheWholeRangeOfIdentifiers) {
    EXPECT_THAT(decode(withID("0")), are(StoredDisplay{0, true, {5.5}}));
    EXPECT_THAT(decode(withID("4294967295")), are(StoredDisplay{highestID, true, {5.5}}));
}

TEST(StoredFormatDecode, ReadsAnIdentifierFromAnyNumberWithAnIntegerValue) {
    for (const std::string id : {"1.0", "1e0", "1.0e0", "10E-1", "0.1e1"}) {
        EXPECT_THAT(decode(withID(id)), are(plain)) << id;
    }
    EXPECT_THAT(decode(withID("4294967295.0")), are(StoredDisplay{highestID, true, {5.5}}));
    EXPECT_THAT(decode(withID("-0")), are(StoredDisplay{0, true, {5.5}}));
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
        EXPECT_THAT(decode(withTime(text)), are(StoredDisplay{1, true, {time}})) << text;
    }
}

TEST(StoredFormatDecode, RefusesWhatIsNotOneJSONArray) {
    expectRefused(justThat, {"", " ", "null", "true", "1", "-1", "1.5", R"("1")", "{}", "[", "]"});
    expectRefused(justThat, {R"({"id":1,"isBuiltIn":true,"lastSeenAt":5.5})"});
    expectRefused(justThat, {"[,]", "[]]", "[][]", "[] x", "[],", "[] // end", "/**/[]"});
    expectRefused(justThat, {"[]\0"s, "[]\0 "s, "\0[]"s, "[]\xff"});
    expectRefused(justThat, {withID("1") + "\0x"s, withID("1") + "0"});
}

TEST(StoredFormatDecode, RefusesElementsThatAreNotObjects) {
    expectRefused(listOf, {"null", "true", "1", "-1", "1.5", R"("1")", "[]"});
}

TEST(StoredFormatDecode, RefusesAllWhenOneMemberOfOneRecordIsMissing) {
    const std::string before = R"({"id":1,"isBuiltIn":true,"lastSeenAt":5.5},)";
    const std::string after = R"(,{"id":1,"isBuiltIn":true,"lastSeenAt":5.5})";
    for (const std::string element :
         {R"({})", R"({"isBuiltIn":true,"lastSeenAt":5.5})", R"({"id":1,"lastSeenAt":5.5})",
          R"({"id":1,"isBuiltIn":true})", R"({"ID":1,"isBuiltIn":true,"lastSeenAt":5.5})"}) {
        expectRefused(listOf, {element, before + element, element + after});
    }
}

TEST(StoredFormatDecode, RefusesIdentifiersOutOfRangeOrOfAnotherType) {
    expectRefused(withID, {"-1", "-9223372036854775808", "4294967296", "4294967296.0",
                           "18446744073709551615", "18446744073709551616", "-0.5", "1.5", "1e-1",
                           "1e300", "null", "true", R"("1")", "[]", "[1]", "{}"});
}

TEST(StoredFormatDecode, RefusesABuiltInAnswerOfAnotherType) {
    expectRefused(withBuiltIn, {"null", "0", "1", "-1", "1.5", R"("true")", "[]", "{}"});
}

TEST(StoredFormatDecode, RefusesTimesOutOfRangeOrOfAnotherType) {
    expectRefused(withTime,
                  {"1e999", "-1e999", "null", "true", R"("5.5")", "[]", "{}", "NaN", "Infinity"});
}

TEST(StoredFormatDecode, RefusesBadJSONEvenInIgnoredMembers) {
    expectRefused(withUnknown, {"1e999", "01", "+1", ".5", "1.", "nul", "'text'", "[1,]",
                                R"({"a":1,})", R"({"a"})", R"("\ud800")", R"("\x")", "\"\n\""});
    expectRefused(withUnknown, {"\"\xff\"", "\"\xc0\xaf\"", "\"\xed\xa0\x80\"",
                                "\"\xf4\x90\x80\x80\"", "\"\xe2\x82\"", "\"\0\""s});
}

TEST(StoredFormatDecode, ReadsNestingOf512LevelsAndNoDeeper) {
    constexpr std::size_t levels = 512 - 2;  // The list and the record are two.
    const auto nested = [](std::size_t n, const std::string& open, const std::string& close) {
        return repeated(n, open).append("0").append(repeated(n, close));
    };

    EXPECT_THAT(decode(withUnknown(nested(levels, "[", "]"))), are(plain));
    EXPECT_THAT(decode(withUnknown(nested(levels, R"({"a":)", "}"))), are(plain));
    expectRefused(withUnknown, {nested(levels + 1, "[", "]"), nested(levels + 1, R"({"a":)", "}")});
}

TEST(StoredFormatDecode, BracketsSideBySideOrInTextAreNoNesting) {
    const std::string sideBySide = "[[]" + repeated(1000, ",[],{}") + "]";
    const std::string inText = R"("\\)" + repeated(1000, R"(\"[{)") + '"';

    EXPECT_THAT(decode(withUnknown(sideBySide)), are(plain));
    EXPECT_THAT(decode(withUnknown(inText)), are(plain));
}

TEST(StoredFormatDecode, SurvivesNestingWithoutEnd) {
    constexpr std::size_t levels = 5'000'000;

    EXPECT_EQ(decode(std::string(levels, '[')), std::nullopt);
    EXPECT_EQ(decode(withUnknown(std::string(levels, '['))), std::nullopt);
    EXPECT_EQ(decode(withUnknown(std::string(levels, '{'))), std::nullopt);
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
