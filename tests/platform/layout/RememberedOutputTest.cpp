#include "platform/layout/RememberedOutput.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>

#include "platform/layout/RememberedOutputs.h"
#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::x11 {
namespace {

using Json = nlohmann::json;

RememberedOutput example(DisplayID display = 4000000000U) {
    return {.display = display,
            .mode = {.width = 1920,
                     .height = 1080,
                     .dotClock = 4294967295U,
                     .horizontalSyncStart = 1,
                     .horizontalSyncEnd = 2,
                     .horizontalTotal = 3,
                     .horizontalSkew = 4,
                     .verticalSyncStart = 5,
                     .verticalSyncEnd = 6,
                     .verticalTotal = 7,
                     .flags = 8},
            .modeHint = 9,
            .crtcHint = 10,
            .area = {-11, 12, 13, 14},
            .rotation = 2 | 16,
            .transform = {.matrix = {1, -2, 3, 4, 5, 6, 7, 8, 9},
                          .filter = "bilinear",
                          .parameters = {-1, 2}},
            .mirrors = {15, 16},
            .primary = true,
            .primaryOnLoan = true,
            .screen = {17, 18, 19, 20}};
}

TEST(RememberedOutputTest, ReadsBackWhatItWrote) {
    const std::vector<RememberedOutput> some{example(1), example(2), RememberedOutput{}};
    EXPECT_EQ(decodeRemembered(encodeRemembered(some)), some);
    EXPECT_EQ(decodeRemembered(encodeRemembered({})), std::vector<RememberedOutput>{});
}

TEST(RememberedOutputTest, ReadsWhatEarlierVersionsWrote) {
    const char* stored = R"([{"area":{"height":1080,"width":1920,"x":1920,"y":0},"crtcHint":63,
        "display":7,"mirrors":[8],"mode":{"dotClock":173000000,"flags":6,"height":1080,
        "horizontalSkew":0,"horizontalSyncEnd":2248,"horizontalSyncStart":2048,
        "horizontalTotal":2576,"verticalSyncEnd":1088,"verticalSyncStart":1083,
        "verticalTotal":1120,"width":1920},"modeHint":94,"primary":true,"primaryOnLoan":false,"rotation":1,
        "screen":{"height":1080,"heightInMillimetres":285,"width":3840,
        "widthInMillimetres":1013},"transform":{"filter":"",
        "matrix":[65536,0,0,0,65536,0,0,0,65536],"parameters":[]}}])";
    const auto decoded = decodeRemembered(stored);
    ASSERT_TRUE(decoded.has_value());
    ASSERT_EQ(decoded->size(), 1U);
    EXPECT_EQ(decoded->front().display, 7U);
    EXPECT_EQ(decoded->front().area, (Area{1920, 0, 1920, 1080}));
    EXPECT_EQ(decoded->front().mode.dotClock, 173000000U);
    EXPECT_EQ(decoded->front().mirrors, std::vector<DisplayID>{8});
    EXPECT_TRUE(decoded->front().primary);
    EXPECT_TRUE(decoded->front().transform.isIdentity());
}

TEST(RememberedOutputTest, AFilterWithStrangeBytesIsWrittenAllTheSame) {
    RememberedOutput strange = example();
    strange.transform.filter = "\xff\xfe";
    EXPECT_TRUE(decodeRemembered(encodeRemembered({strange})).has_value());
}

TEST(RememberedOutputTest, RefusesWhatIsNotAListOfThem) {
    for (const char* bytes : {"", "null", "{}", "1", "\"\"", "[1]", "[[]]", "[null]", "[{}]", "[",
                              "[]]", "[] 1", "\xff", "[\"\xff\"]", "1e999", "[1e999]"}) {
        EXPECT_EQ(decodeRemembered(bytes), std::nullopt) << bytes;
    }
    EXPECT_EQ(decodeRemembered(std::string(100'000, '[')), std::nullopt);
}

/// Replaces each value in a stored output in turn, at any depth.
void forEachDamage(const std::function<void(const std::string& where, const Json& damaged)>& use) {
    const Json whole = Json::parse(encodeRemembered({example()}));
    const Json flat = whole.flatten();
    for (const auto& [where, value] : flat.items()) {
        const Json::json_pointer pointer(where);
        for (const Json& bad :
             {Json(nullptr), Json(Json::array()), Json(Json::object()), Json(1.5), Json(1e30),
              Json(18446744073709551615U), Json(std::int64_t{-9223372036854775807}), Json("1")}) {
            Json damaged = whole;
            damaged[pointer] = bad;
            const bool isText = value.is_string() && bad.is_string();
            if (!isText) {
                use(where + " := " + bad.dump(), damaged);
            }
        }
    }
}

TEST(RememberedOutputTest, RefusesAnyMemberOfTheWrongKindOrSize) {
    int cases = 0;
    forEachDamage([&](const std::string& where, const Json& damaged) {
        ++cases;
        EXPECT_EQ(decodeRemembered(damaged.dump()), std::nullopt) << where;
    });
    EXPECT_GT(cases, 200);
}

TEST(RememberedOutputTest, RefusesWhenAnyMemberIsMissing) {
    const Json whole = Json::parse(encodeRemembered({example()}));
    const auto expectNeeded = [&](const Json::json_pointer& object) {
        for (const auto& [name, value] : whole[object].items()) {
            Json damaged = whole;
            damaged[object].erase(name);
            EXPECT_EQ(decodeRemembered(damaged.dump()), std::nullopt) << object << '/' << name;
        }
    };
    for (const char* object : {"/0", "/0/mode", "/0/area", "/0/transform", "/0/screen"}) {
        expectNeeded(Json::json_pointer(object));
    }
}

TEST(RememberedOutputTest, RefusesARotationThatIsNone) {
    for (const int rotation : {0, 3, 16, 64, 65}) {
        RememberedOutput output = example();
        output.rotation = static_cast<Rotation>(rotation);
        EXPECT_EQ(decodeRemembered(encodeRemembered({output})), std::nullopt) << rotation;
    }
}

class RememberedOutputsTest : public testing::Test {
protected:
    std::vector<DisplayID> displays() const {
        std::vector<DisplayID> displays;
        for (const RememberedOutput& each : remembered.all()) {
            displays.push_back(each.display);
        }
        return displays;
    }

    SimulatedUserDefaults store;
    RememberedOutputs remembered{store};
};

TEST_F(RememberedOutputsTest, AreEmptyAtFirst) {
    EXPECT_TRUE(displays().empty());
}

TEST_F(RememberedOutputsTest, AreSharedThroughTheStore) {
    RememberedOutputs otherProgram(store);
    remembered.replace({example(1)});
    otherProgram.replace({example(1), example(2)});
    EXPECT_THAT(displays(), testing::ElementsAre(1, 2));
}

TEST_F(RememberedOutputsTest, AreNoneWhereTheStoreIsMalformed) {
    store.replaceFromOutside(rememberedOutputsKey, "[1]");
    EXPECT_TRUE(displays().empty());
    remembered.replace({example(3)});
    EXPECT_THAT(displays(), testing::ElementsAre(3));
}

TEST_F(RememberedOutputsTest, StayInMemoryWhereTheStoreCannotBeWritten) {
    remembered.replace({example(1)});
    store.setWritable(false);
    remembered.replace({example(1), example(2)});
    EXPECT_THAT(displays(), testing::ElementsAre(1, 2));
    store.setWritable(true);
    remembered.replace({example(3)});
    EXPECT_THAT(displays(), testing::ElementsAre(3));
    store.remove(rememberedOutputsKey);
    EXPECT_TRUE(displays().empty()) << "the store counts again";
}

TEST_F(RememberedOutputsTest, GiveUpTheOldestOfVeryMany) {
    std::vector<RememberedOutput> many;
    for (DisplayID i = 1; i <= 70; ++i) {
        many.push_back(example(i));
    }
    remembered.replace(many);
    EXPECT_EQ(displays().size(), 64U);
    EXPECT_EQ(displays().front(), 7U);
    EXPECT_EQ(displays().back(), 70U);
}

}  // namespace
}  // namespace tavrel::x11
