#include "platform/posix/FileUserDefaults.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/platform/posix/FileUserDefaultsFixture.h"

namespace tavrel {
namespace {

using namespace std::string_literals;

unsigned modeOf(const std::filesystem::path& path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
}

TEST_F(FileUserDefaultsTest, ReadingFindsNothingWithoutAFileAndCreatesNone) {
    EXPECT_EQ(store.data("key"), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(path.parent_path()));
}

TEST_F(FileUserDefaultsTest, GivesBackWhatWasStored) {
    for (const std::string& value :
         {"text"s, ""s, "zero \0 byte"s, "\"quoted\" \\ \n\t\x01"s, "“typographic” · 🖥"s,
          R"([{"id":1,"isBuiltIn":true,"lastSeenAt":786000000.25}])"s, std::string(100'000, 'x')}) {
        EXPECT_TRUE(store.setData("key", value));
        EXPECT_EQ(store.data("key"), value);
        EXPECT_EQ(FileUserDefaults(path).data("key"), value);
    }
}

TEST_F(FileUserDefaultsTest, KeepsKeysApart) {
    EXPECT_TRUE(store.setData("one", "1"));
    EXPECT_TRUE(store.setData("two", "2"));
    EXPECT_TRUE(store.setData("one", "3"));

    EXPECT_EQ(store.data("one"), "3");
    EXPECT_EQ(store.data("two"), "2");
    EXPECT_EQ(store.data("three"), std::nullopt);
}

TEST_F(FileUserDefaultsTest, UpdateMakesTheNewValueOfTheOldOne) {
    write(R"({"key":"old","number":1})");
    const auto appendNew = [](const auto& old) { return old.value_or("nothing") + " and new"; };

    EXPECT_TRUE(store.update("key", appendNew));
    EXPECT_TRUE(store.update("missing", appendNew));
    EXPECT_TRUE(store.update("number", appendNew));

    EXPECT_EQ(store.data("key"), "old and new");
    EXPECT_EQ(store.data("missing"), "nothing and new");
    EXPECT_EQ(store.data("number"), "nothing and new");
}

TEST_F(FileUserDefaultsTest, UpdateThatChangesNothingWritesNothing) {
    write(R"({"key":"old"})");

    EXPECT_TRUE(store.update("key", [](const auto&) { return std::nullopt; }));

    EXPECT_EQ(contents(), R"({"key":"old"})");
}

TEST_F(FileUserDefaultsTest, StoresAnObjectOfKeyToText) {
    store.setData("key", "é");

    EXPECT_EQ(contents(), "{\n  \"key\": \"é\"\n}\n");
}

TEST_F(FileUserDefaultsTest, FindsNothingUnderAKeyThatHoldsSomethingElseAndLeavesItThere) {
    write(R"({"number": 1.5, "list": [1, {"a": null}], "text": "t"})");

    EXPECT_EQ(store.data("number"), std::nullopt);
    EXPECT_EQ(store.data("list"), std::nullopt);

    EXPECT_TRUE(store.setData("key", "value"));
    EXPECT_EQ(contents(),
              "{\n  \"key\": \"value\",\n  \"list\": [\n    1,\n    {\n      \"a\": null\n    }\n"
              "  ],\n  \"number\": 1.5,\n  \"text\": \"t\"\n}\n");
}

TEST_F(FileUserDefaultsTest, RefusesTextThatIsNotUTF8AndKeepsTheOldValue) {
    store.setData("key", "old");
    for (const std::string_view bad : {"\xff", "\xc0\xaf", "\xed\xa0\x80", "cut \xe2\x82"}) {
        EXPECT_FALSE(store.setData("key", bad));
        EXPECT_FALSE(store.setData(bad, "value"));
    }

    EXPECT_EQ(store.data("key"), "old");
    EXPECT_EQ(names(), fileAndLock);
}

TEST_F(FileUserDefaultsTest, LeavesOnlyTheFileAndItsLockBehind) {
    store.setData("key", "value");
    store.setData("key", "other");

    EXPECT_EQ(names(), fileAndLock);
}

TEST_F(FileUserDefaultsTest, IsPrivateToItsOwnerWhateverTheUmask) {
    for (const mode_t mask : {mode_t{0000}, mode_t{0022}, mode_t{0077}, mode_t{0777}}) {
        std::filesystem::remove_all(path.parent_path().parent_path());

        const mode_t before = umask(mask);
        EXPECT_TRUE(store.setData("key", "value"));
        EXPECT_TRUE(store.setData("key", "other"));
        umask(before);

        EXPECT_EQ(modeOf(path), 0600U);
        EXPECT_EQ(modeOf(beside(".lock")), 0600U);
        EXPECT_EQ(modeOf(path.parent_path()), 0700U);
        EXPECT_EQ(modeOf(path.parent_path().parent_path()), 0700U);
    }
}

TEST_F(FileUserDefaultsTest, WritingTakesRightsOfOthersFromAFileThatGaveThem) {
    write(R"({"key":"old"})");
    chmod(path.c_str(), 0666);

    store.setData("key", "new");

    EXPECT_EQ(modeOf(path), 0600U);
}

TEST_F(FileUserDefaultsTest, LeavesTheRightsOfAnExistingFolder) {
    std::filesystem::create_directories(path.parent_path());
    chmod(path.parent_path().c_str(), 0755);

    store.setData("key", "value");

    EXPECT_EQ(modeOf(path.parent_path()), 0755U);
}

TEST_F(FileUserDefaultsTest, FollowsAFolderThatIsALink) {
    const auto real = folder.path() / "elsewhere";
    std::filesystem::create_directory(real);
    std::filesystem::create_directory(path.parent_path().parent_path());
    std::filesystem::create_directory_symlink(real, path.parent_path());

    EXPECT_TRUE(store.setData("key", "value"));

    EXPECT_EQ(store.data("key"), "value");
    EXPECT_TRUE(std::filesystem::is_symlink(path.parent_path()));
    EXPECT_TRUE(std::filesystem::is_regular_file(real / "defaults.json"));
}

TEST_F(FileUserDefaultsTest, FollowsAFileThatIsALink) {
    const auto real = folder.path() / "elsewhere.json";
    support::writeFile(real, R"({"key":"old"})");
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::create_symlink(real, path);

    EXPECT_TRUE(store.setData("other", "value"));

    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_EQ(FileUserDefaults(real).data("key"), "old");
    EXPECT_EQ(FileUserDefaults(real).data("other"), "value");
}

TEST_F(FileUserDefaultsTest, WithoutAPathFindsNothingAndStoresNothing) {
    FileUserDefaults nowhere{{}};

    EXPECT_FALSE(nowhere.setData("key", "value"));
    EXPECT_EQ(nowhere.data("key"), std::nullopt);
}

TEST_F(FileUserDefaultsTest, RemovesWhatAKilledWriterLeft) {
    support::writeFile(beside(".new-abcdef"), "half");
    support::writeFile(beside(".backup"), "not ours");

    store.setData("key", "value");

    EXPECT_EQ(names(), (Names{"defaults.json", "defaults.json.lock", "defaults.json.backup"}));
}

}  // namespace
}  // namespace tavrel
