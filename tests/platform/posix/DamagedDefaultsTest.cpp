#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/platform/posix/FileUserDefaultsFixture.h"

namespace tavrel {
namespace {

using namespace std::string_literals;
using testing::UnorderedElementsAre;

using DamagedDefaultsTest = FileUserDefaultsTest;

TEST_F(DamagedDefaultsTest, FileThatIsNoObjectIsEmptyAndIsKeptBesideByTheNextWrite) {
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    const std::string big(6'000'000, 'x');
    const std::vector<std::string> damages = {
        "",
        "{",
        "[]",
        "null",
        R"("text")",
        R"({"key":"value"} trailing)",
        R"({"key":"value"})"
        "\0"s,
        "{\"key\":\"\xff\"}",
        R"({"key":1e999})",
        "\0\0\0\0"s,
        R"({"key":"value","deep":)" + deep + "}",
        R"({"key":"value","big":")" + big + big + big + "\"}"};
    for (const std::string& damage : damages) {
        support::TemporaryFolder folder;
        const auto path = folder.path() / "defaults.json";
        FileUserDefaults store(path);
        support::writeFile(path, damage);
        const std::string shown = damage.substr(0, 40);

        EXPECT_EQ(store.data("key"), std::nullopt) << shown;
        EXPECT_EQ(support::readFile(path), damage) << shown;

        EXPECT_TRUE(store.setData("other", "new")) << shown;
        EXPECT_EQ(store.data("other"), "new") << shown;
        EXPECT_EQ(store.data("key"), std::nullopt) << shown;
        EXPECT_EQ(support::readFile(path.string() + ".damaged"), damage) << shown;
    }
}

TEST_F(DamagedDefaultsTest, EachDamagedFileIsKept) {
    for (const std::string damage : {"first", "second", "third"}) {
        write(damage);
        EXPECT_TRUE(store_.setData("key", "value"));
    }

    EXPECT_THAT(names(),
                UnorderedElementsAre("defaults.json", "defaults.json.lock", "defaults.json.damaged",
                                     "defaults.json.damaged-2", "defaults.json.damaged-3"));
    EXPECT_EQ(support::readFile(path_.string() + ".damaged"), "first");
    EXPECT_EQ(support::readFile(path_.string() + ".damaged-2"), "second");
    EXPECT_EQ(support::readFile(path_.string() + ".damaged-3"), "third");
}

TEST_F(DamagedDefaultsTest, RefusedValueLeavesADamagedFileWhereItIs) {
    write("damaged");

    EXPECT_FALSE(store_.setData("key", "\xff"));
    EXPECT_EQ(contents(), "damaged");
    EXPECT_THAT(names(), UnorderedElementsAre("defaults.json", "defaults.json.lock"));
}

TEST_F(DamagedDefaultsTest, FolderInPlaceOfTheFileIsMovedAside) {
    std::filesystem::create_directories(path_ / "inside");

    EXPECT_EQ(store_.data("key"), std::nullopt);
    EXPECT_TRUE(store_.setData("key", "value"));
    EXPECT_EQ(store_.data("key"), "value");
    EXPECT_TRUE(std::filesystem::is_directory(path_.string() + ".damaged/inside"));
}

TEST_F(DamagedDefaultsTest, PipeInPlaceOfTheFileDoesNotHoldAnyoneUp) {
    std::filesystem::create_directories(path_.parent_path());
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);

    EXPECT_EQ(store_.data("key"), std::nullopt);
    EXPECT_TRUE(store_.setData("key", "value"));
    EXPECT_EQ(store_.data("key"), "value");
}

}  // namespace
}  // namespace tavrel
