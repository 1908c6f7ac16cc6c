#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/platform/posix/FileUserDefaultsFixture.h"

namespace tavrel {
namespace {

using namespace std::string_literals;

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
        SCOPED_TRACE(damage.substr(0, 40));
        std::filesystem::remove(beside(".damaged"));
        write(damage);

        EXPECT_EQ(store.data("key"), std::nullopt);
        EXPECT_EQ(contents(), damage);

        EXPECT_TRUE(store.setData("other", "new"));
        EXPECT_EQ(store.data("other"), "new");
        EXPECT_EQ(store.data("key"), std::nullopt);
        EXPECT_EQ(support::readFile(beside(".damaged")), damage);
    }
}

TEST_F(DamagedDefaultsTest, EachDamagedFileIsKept) {
    for (const std::string damage : {"first", "second", "third"}) {
        write(damage);
        EXPECT_TRUE(store.setData("key", "value"));
    }

    EXPECT_EQ(names().size(), fileAndLock.size() + 3);
    EXPECT_EQ(support::readFile(beside(".damaged")), "first");
    EXPECT_EQ(support::readFile(beside(".damaged-2")), "second");
    EXPECT_EQ(support::readFile(beside(".damaged-3")), "third");
}

TEST_F(DamagedDefaultsTest, RefusedValueLeavesADamagedFileWhereItIs) {
    write("damaged");

    EXPECT_FALSE(store.setData("key", "\xff"));
    EXPECT_EQ(contents(), "damaged");
    EXPECT_EQ(names(), fileAndLock);
}

TEST_F(DamagedDefaultsTest, FolderInPlaceOfTheFileIsMovedAside) {
    std::filesystem::create_directories(path / "inside");

    EXPECT_EQ(store.data("key"), std::nullopt);

    EXPECT_TRUE(store.setData("key", "value"));
    EXPECT_EQ(store.data("key"), "value");
    EXPECT_TRUE(std::filesystem::is_directory(beside(".damaged/inside")));
}

TEST_F(DamagedDefaultsTest, PipeInPlaceOfTheFileBlocksNoOne) {
    std::filesystem::create_directories(path.parent_path());
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);

    EXPECT_EQ(store.data("key"), std::nullopt);

    EXPECT_TRUE(store.setData("key", "value"));
    EXPECT_EQ(store.data("key"), "value");
}

}  // namespace
}  // namespace tavrel
