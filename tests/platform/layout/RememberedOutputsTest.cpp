#include "platform/layout/RememberedOutputs.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::layout {
namespace {

using Json = nlohmann::json;

RememberedOutput example(DisplayID display = 4000000000U) {
    return {.display = display,
            .mode = {.width = 1920,
                     .height = 1080,
                     .refreshMillihertz = 59962,
                     .timings = {4294967295, -1, 0}},
            .area = {-11, 12, 13, 14},
            .rotation = rotate90 | reflectX,
            .mirrors = {15, 16},
            .primary = true,
            .primaryOnLoan = true,
            .notes = R"({"hint":9,"scaling":{"factor":1.5}})"};
}

/// Of a window server that scales, and closes gaps.
RememberedOutput scaledExample() {
    RememberedOutput output = example(7);
    output.notes = "{}";
    output.scale = 1.25;
    output.arrangement = {{7, {-11, 12, 13, 14}}, {8, {2, 12, 20, 14}}};
    return output;
}

TEST(MemoryTest, ReadsBackWhatItWrote) {
    const Memory some{example(1), example(2), RememberedOutput{}, scaledExample()};

    EXPECT_EQ(decodeMemory(encodeMemory(some)), some);
    EXPECT_EQ(decodeMemory(encodeMemory({})), Memory{});
}

TEST(MemoryTest, KeepsItsStoredForm) {
    EXPECT_EQ(encodeMemory({example(7)}),
              R"([{"area":{"height":14,"width":13,"x":-11,"y":12},"display":7,"hint":9,)"
              R"("mirrors":[15,16],"mode":{"height":1080,"refresh":59962,)"
              R"("timings":[4294967295,-1,0],"width":1920},"primary":true,"primaryOnLoan":true,)"
              R"("rotation":18,"scaling":{"factor":1.5}}])");
}

TEST(MemoryTest, StoresScaleAndArrangementWhereThereAreSome) {
    const Json stored = Json::parse(encodeMemory({scaledExample()}))[0];

    EXPECT_EQ(stored["scale"], 1.25);
    EXPECT_EQ(stored["arrangement"].dump(),
              R"([{"area":{"height":14,"width":13,"x":-11,"y":12},"display":7},)"
              R"({"area":{"height":14,"width":20,"x":2,"y":12},"display":8}])");
}

TEST(MemoryTest, RefusesAScaleThatIsNone) {
    for (const double scale : {0.0, -1.0, 101.0}) {
        RememberedOutput output = scaledExample();
        output.scale = scale;

        EXPECT_EQ(decodeMemory(encodeMemory({output})), std::nullopt) << scale;
    }
}

/// A record as version 0.1 wrote it.
constexpr const char* oldRecord =
    R"([{"area":{"height":1080,"width":1920,"x":1920,"y":0},"crtcHint":63,
    "display":7,"mirrors":[8],"mode":{"dotClock":173000000,"flags":6,"height":1080,
    "horizontalSkew":0,"horizontalSyncEnd":2248,"horizontalSyncStart":2048,
    "horizontalTotal":2576,"verticalSyncEnd":1088,"verticalSyncStart":1083,
    "verticalTotal":1120,"width":1920},"modeHint":94,"primary":true,"primaryOnLoan":false,
    "rotation":1,"screen":{"height":1080,"heightInMillimetres":285,"width":3840,
    "widthInMillimetres":1013},"transform":{"filter":"",
    "matrix":[65536,0,0,0,65536,0,0,0,65536],"parameters":[]}}])";

TEST(MemoryTest, ReadsWhatVersion01Wrote) {
    const RememberedOutput expected{
        .display = 7,
        .mode = {.width = 1920,
                 .height = 1080,
                 .refreshMillihertz = 59962,
                 .timings = {173000000, 2048, 2248, 2576, 0, 1083, 1088, 1120, 6}},
        .area = {1920, 0, 1920, 1080},
        .rotation = rotate0,
        .mirrors = {8},
        .primary = true,
        .primaryOnLoan = false,
        .notes = R"({"crtcHint":63,"modeHint":94,)"
                 R"("screen":{"height":1080,"heightInMillimetres":285,"width":3840,)"
                 R"("widthInMillimetres":1013},"transform":{"filter":"",)"
                 R"("matrix":[65536,0,0,0,65536,0,0,0,65536],"parameters":[]}})"};

    EXPECT_EQ(decodeMemory(oldRecord), Memory{expected});
}

TEST(MemoryTest, NotesThatAreNoObjectAreLeftOut) {
    RememberedOutput output = example();
    for (const char* notes : {"", "[1]", "{\"a\":"}) {
        output.notes = notes;
        EXPECT_EQ(decodeMemory(encodeMemory({output})).value().front().notes, "{}") << notes;
    }
}

TEST(MemoryTest, RefusesWhatIsNotAListOfRecords) {
    for (const char* bytes : {"", "null", "{}", "1", "\"\"", "[1]", "[[]]", "[null]", "[{}]", "[",
                              "[]]", "[] 1", "\xff", "[\"\xff\"]", "1e999", "[1e999]"}) {
        EXPECT_EQ(decodeMemory(bytes), std::nullopt) << bytes;
    }
    EXPECT_EQ(decodeMemory(std::string(100'000, '[')), std::nullopt);
}

TEST(MemoryTest, RefusesWhatIsNestedTooDeepToBeCopied) {
    const auto withNested = [](std::size_t levels) {
        std::string text = encodeMemory({example()});
        const std::string hint = R"("hint":9)";
        return text.replace(text.find(hint), hint.size(),
                            R"("hint":)" + std::string(levels, '[') + std::string(levels, ']'));
    };

    EXPECT_NE(decodeMemory(withNested(100)), std::nullopt);
    EXPECT_EQ(decodeMemory(withNested(1'000'000)), std::nullopt);
}

TEST(MemoryTest, KeepsWhatIsJustWithinItsLimits) {
    constexpr int far = 1'000'000;
    RememberedOutput output = scaledExample();
    for (const Area& area : {Area{far, far, far, far}, Area{-far, -far, 1, 1}}) {
        output.area = area;

        EXPECT_EQ(decodeMemory(encodeMemory({output})), Memory{output});
    }
    for (const double scale : {0.5, 100.0}) {
        output.scale = scale;

        EXPECT_EQ(decodeMemory(encodeMemory({output})), Memory{output});
    }
}

TEST(MemoryTest, RefusesAnAreaBeyondAnyDesktop) {
    constexpr int far = 1'000'001;
    for (const Area& area : {Area{far, 0, 1, 1}, Area{0, far, 1, 1}, Area{0, 0, far, 1},
                             Area{0, 0, 1, far}, Area{-far, 0, 1, 1}, Area{0, -far, 1, 1}}) {
        RememberedOutput output = example();
        output.area = area;

        EXPECT_EQ(decodeMemory(encodeMemory({output})), std::nullopt);
    }
}

TEST(MemoryTest, RefusesARotationThatIsNone) {
    RememberedOutput output = example();
    output.rotation = 3;

    EXPECT_EQ(decodeMemory(encodeMemory({output})), std::nullopt);
}

/// Records of today and of version 0.1, without the notes, which are not looked into.
class DamagedMemoryTest : public testing::TestWithParam<std::string> {
protected:
    DamagedMemoryTest() {
        for (const char* note :
             {"hint", "scaling", "crtcHint", "modeHint", "screen", "transform"}) {
            whole[0].erase(note);
        }
    }

    Json whole = Json::parse(GetParam());
};

TEST_P(DamagedMemoryTest, IsRefusedWithAnyMemberOfTheWrongKindOrSize) {
    ASSERT_NE(decodeMemory(whole.dump()), std::nullopt);
    const std::vector<Json> wrong{
        nullptr, Json::array(), Json::object(), 1.5, 1e30, 18446744073709551615U, "1"};
    const Json flat = whole.flatten();
    for (const auto& [where, value] : flat.items()) {
        for (const Json& bad : wrong) {
            if (where == "/0/scale" && bad == 1.5) {
                continue;
            }
            Json damaged = whole;
            damaged[Json::json_pointer(where)] = bad;
            EXPECT_EQ(decodeMemory(damaged.dump()), std::nullopt) << where << " := " << bad;
        }
    }
}

TEST_P(DamagedMemoryTest, IsRefusedWithAnythingButAListInPlaceOfOne) {
    for (const char* path : {"/0/mirrors", "/0/mode/timings", "/0/arrangement"}) {
        const Json::json_pointer list(path);
        if (!whole.contains(list)) {
            continue;
        }
        for (const Json& bad : std::vector<Json>{nullptr, Json::object(), true, 1, 1.5, "1"}) {
            Json damaged = whole;
            damaged[list] = bad;
            EXPECT_EQ(decodeMemory(damaged.dump()), std::nullopt) << path << " := " << bad;
        }
    }
}

TEST_P(DamagedMemoryTest, IsRefusedWithAnyNumberTooSmall) {
    const Json flat = whole.flatten();
    for (const auto& [where, value] : flat.items()) {
        // A timing can be any number that the window server has.
        if (value.is_number() && where.find("timings") == std::string::npos) {
            Json damaged = whole;
            damaged[Json::json_pointer(where)] = std::int64_t{-9223372036854775807};
            EXPECT_EQ(decodeMemory(damaged.dump()), std::nullopt) << where;
        }
    }
}

TEST_P(DamagedMemoryTest, IsRefusedWithAnyMemberMissing) {
    for (const char* path : {"/0", "/0/mode", "/0/area", "/0/arrangement/1"}) {
        const Json::json_pointer object(path);
        if (!whole.contains(object)) {
            continue;
        }
        for (const auto& [name, value] : whole[object].items()) {
            // Which most window servers know nothing of.
            if (name == "scale" || name == "arrangement") {
                continue;
            }
            Json damaged = whole;
            damaged[object].erase(name);
            EXPECT_EQ(decodeMemory(damaged.dump()), std::nullopt) << object << '/' << name;
        }
    }
}

std::string versionName(const testing::TestParamInfo<std::string>& version) {
    return std::array<const char*, 3>{"Today", "Version01", "Scaled"}.at(version.index);
}

INSTANTIATE_TEST_SUITE_P(Versions, DamagedMemoryTest,
                         testing::Values(encodeMemory({example()}), oldRecord,
                                         encodeMemory({scaledExample()})),
                         versionName);

TEST(MergedMemoryTest, WhatOthersRememberedOrForgotMeanwhileStaysSo) {
    const Memory before{example(1), example(2)};
    const Memory after{example(2), example(3)};
    const Memory now{example(1), example(4)};

    EXPECT_EQ(merged(now, before, after), (Memory{example(4), example(3)}));
}

TEST(MergedMemoryTest, WhatHasChangedIsTheLatest) {
    RememberedOutput moved = example(1);
    moved.area.x = 5;
    const Memory before{example(1), example(2)};

    EXPECT_EQ(merged(before, before, {moved, example(2)}), (Memory{example(2), moved}));
}

TEST(MergedMemoryTest, WithoutAChangeAllStaysAsItIs) {
    EXPECT_EQ(merged({example(5)}, {example(1)}, {example(1)}), (Memory{example(5)}));
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

    static void replaceIn(RememberedOutputs& outputs, const Memory& memory) {
        outputs.update([&](const Memory&) { return memory; });
    }

    SimulatedUserDefaults store;
    RememberedOutputs remembered{store};
};

TEST_F(RememberedOutputsTest, AreEmptyAtFirst) {
    EXPECT_TRUE(displays().empty());
}

TEST_F(RememberedOutputsTest, AreSharedThroughTheStore) {
    RememberedOutputs otherProgram(store);

    replaceIn(remembered, {example(1)});
    replaceIn(otherProgram, {example(1), example(2)});

    EXPECT_THAT(displays(), testing::ElementsAre(1, 2));
}

TEST_F(RememberedOutputsTest, AreChangedFromWhatTheStoreHoldsThen) {
    RememberedOutputs otherProgram(store);
    replaceIn(remembered, {example(1)});
    replaceIn(otherProgram, {example(1), example(2)});

    remembered.update([](Memory memory) {
        forget(memory, 1);
        return memory;
    });

    EXPECT_THAT(displays(), testing::ElementsAre(2));
}

TEST_F(RememberedOutputsTest, AreNoneWhereTheStoreIsMalformed) {
    store.replaceFromOutside(rememberedOutputsKey, "[1]");
    EXPECT_TRUE(displays().empty());

    replaceIn(remembered, {example(3)});

    EXPECT_THAT(displays(), testing::ElementsAre(3));
}

TEST_F(RememberedOutputsTest, StayInMemoryWhereTheStoreCannotBeWritten) {
    replaceIn(remembered, {example(1)});
    store.setWritable(false);
    replaceIn(remembered, {example(1), example(2)});
    EXPECT_THAT(displays(), testing::ElementsAre(1, 2));

    store.setWritable(true);
    replaceIn(remembered, {example(3)});
    EXPECT_THAT(displays(), testing::ElementsAre(3));

    store.remove(rememberedOutputsKey);
    EXPECT_TRUE(displays().empty()) << "the store counts again";
}

TEST_F(RememberedOutputsTest, GiveUpTheOldestOfVeryMany) {
    Memory many;
    for (DisplayID i = 1; i <= 70; ++i) {
        many.push_back(example(i));
    }

    replaceIn(remembered, many);

    EXPECT_EQ(displays().size(), 64U);
    EXPECT_EQ(displays().front(), 7U);
    EXPECT_EQ(displays().back(), 70U);
}

}  // namespace
}  // namespace tavrel::layout
