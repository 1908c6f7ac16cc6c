#include "platform/x11/crtc/CrtcNotes.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <nlohmann/json.hpp>

namespace tavrel::x11 {
namespace {

using Json = nlohmann::json;

CrtcNotes example() {
    return {.modeHint = 9,
            .crtcHint = 10,
            .transform = {.matrix = {1, -2, 3, 4, 5, 6, 7, 8, 9},
                          .filter = "bilinear",
                          .parameters = {-1, 2}},
            .screen = {17, 18, 19, 20}};
}

TEST(CrtcNotesTest, ReadBackAsTheyWereWritten) {
    EXPECT_EQ(decodeNotes(encodeNotes(example())), example());
    EXPECT_EQ(decodeNotes(encodeNotes({})), CrtcNotes{});
}

TEST(CrtcNotesTest, KeepTheirStoredForm) {
    EXPECT_EQ(encodeNotes(example()),
              R"({"crtcHint":10,"modeHint":9,"screen":{"height":18,"heightInMillimetres":20,)"
              R"("width":17,"widthInMillimetres":19},"transform":{"filter":"bilinear",)"
              R"("matrix":[1,-2,3,4,5,6,7,8,9],"parameters":[-1,2]}})");
}

TEST(CrtcNotesTest, AFilterWithStrangeBytesIsWrittenAllTheSame) {
    CrtcNotes strange = example();
    strange.transform.filter = "\xff\xfe";

    EXPECT_TRUE(decodeNotes(encodeNotes(strange)).has_value());
}

TEST(CrtcNotesTest, AreRefusedWithAnyMemberOfTheWrongKindOrSize) {
    const Json whole = Json::parse(encodeNotes(example()));
    const std::vector<Json> wrong{nullptr,
                                  Json::array(),
                                  Json::object(),
                                  1.5,
                                  1e30,
                                  18446744073709551615U,
                                  std::int64_t{-9223372036854775807}};
    const Json flat = whole.flatten();
    for (const auto& [where, value] : flat.items()) {
        for (const Json& bad : wrong) {
            Json damaged = whole;
            damaged[Json::json_pointer(where)] = bad;
            EXPECT_EQ(decodeNotes(damaged.dump()), std::nullopt) << where << " := " << bad;
        }
    }
}

TEST(CrtcNotesTest, AreRefusedWithAnyMemberMissing) {
    const Json whole = Json::parse(encodeNotes(example()));
    for (const char* object : {"", "/transform", "/screen"}) {
        const Json::json_pointer pointer(object);
        for (const auto& [name, value] : whole[pointer].items()) {
            Json damaged = whole;
            damaged[pointer].erase(name);
            EXPECT_EQ(decodeNotes(damaged.dump()), std::nullopt) << object << '/' << name;
        }
    }
}

TEST(CrtcNotesTest, ThoseOfAnotherWindowServerHoldNoHint) {
    EXPECT_EQ(decodeNotes("{}"), CrtcNotes{});
}

TEST(CrtcNotesTest, AreRefusedWithAMatrixOfAnotherSize) {
    Json notes = Json::parse(encodeNotes(example()));
    notes["transform"]["matrix"].push_back(1);

    EXPECT_EQ(decodeNotes(notes.dump()), std::nullopt);
    EXPECT_EQ(decodeNotes(""), std::nullopt);
}

}  // namespace
}  // namespace tavrel::x11
