#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/posix/AtomicFile.h"
#include "tests/platform/posix/FileUserDefaultsFixture.h"
#include "tests/platform/posix/ForkedProcess.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;
using std::chrono::system_clock;

const std::string oldText = R"({"key":"old"})";
const std::string newText = R"({"key":"new"})";

/// A store whose clock is the test's and counts how often the file is read. It is an hour
/// fast, so that the last change of the file seems to be long ago.
class DefaultsInMemoryTest : public FileUserDefaultsTest {
protected:
    /// Makes a file whose value "old" the store has read and now answers from memory.
    void rememberOld() {
        write(oldText);
        EXPECT_EQ(counted.data("key"), "old");
        EXPECT_EQ(counted.data("key"), "old");
        ASSERT_EQ(reads, 1);
    }

    AtomicFile::Version version() const {
        return AtomicFile::versionOf(AtomicFile::openForReading(path)).value();
    }

    int reads = 0;
    system_clock::time_point now = system_clock::now() + 1h;
    FileUserDefaults counted{path, [this] {
                                 ++reads;
                                 return now;
                             }};
};

TEST_F(DefaultsInMemoryTest, UnchangedFileIsReadOnceForAllKeys) {
    write(R"({"key":"value","other":"text","number":1})");

    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(counted.data("key"), "value");
        EXPECT_EQ(counted.data("other"), "text");
        EXPECT_EQ(counted.data("number"), std::nullopt);
        EXPECT_EQ(counted.data("missing"), std::nullopt);
    }
    EXPECT_EQ(reads, 1);
}

TEST_F(DefaultsInMemoryTest, UnchangedFileIsNotEvenOpened) {
    rememberOld();
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit noFurtherFile{.rlim_cur = 0, .rlim_max = before.rlim_max};

    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &noFurtherFile), 0);
    const auto value = counted.data("key");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);

    EXPECT_EQ(value, "old");
}

TEST_F(DefaultsInMemoryTest, UnchangedDamagedFileIsReadOnce) {
    std::string tooLong = "{}";
    tooLong.resize(17'000'000, ' ');
    for (const std::string& damage : {std::string("damaged"), tooLong}) {
        write(damage);
        reads = 0;

        EXPECT_EQ(counted.data("key"), std::nullopt);
        EXPECT_EQ(counted.data("key"), std::nullopt);
        EXPECT_EQ(reads, 1);
    }
}

TEST_F(DefaultsInMemoryTest, WriteOfItsOwnIsSeen) {
    rememberOld();

    EXPECT_TRUE(counted.setData("key", "new"));
    EXPECT_EQ(counted.data("key"), "new");
}

TEST_F(DefaultsInMemoryTest, WriteByAnotherStoreIsSeen) {
    rememberOld();

    EXPECT_TRUE(store.setData("key", "new"));
    EXPECT_EQ(counted.data("key"), "new");
}

TEST_F(DefaultsInMemoryTest, ReplacedFileIsReadAgainAndOnce) {
    rememberOld();
    const auto other = folder.path() / "other.json";
    support::writeFile(other, newText);

    std::filesystem::rename(other, path);

    EXPECT_EQ(counted.data("key"), "new");
    EXPECT_EQ(counted.data("key"), "new");
    EXPECT_EQ(reads, 2);
}

TEST_F(DefaultsInMemoryTest, EditInPlaceToTheSameLengthIsSeen) {
    rememberOld();
    const AtomicFile::Version before = version();

    // To the store the last change seemed to be an hour ago, so this one must not get the
    // same timestamp, as it may when both come within one tick of the kernel's clock.
    do {
        write(newText);
    } while (version().changed == before.changed);

    EXPECT_EQ(version().inode, before.inode);
    EXPECT_EQ(version().size, before.size);
    EXPECT_EQ(counted.data("key"), "new");
}

TEST_F(DefaultsInMemoryTest, EditThatPutsTheTimeOfModificationBackIsSeen) {
    rememberOld();
    const AtomicFile::Version before = version();
    const auto modified = std::filesystem::last_write_time(path);

    do {
        write(newText);
        std::filesystem::last_write_time(path, modified);
    } while (version().changed == before.changed);

    EXPECT_EQ(version().modified, before.modified);
    EXPECT_EQ(counted.data("key"), "new");
}

TEST_F(DefaultsInMemoryTest, RemovedFileIsEmptyUntilItIsBack) {
    rememberOld();

    std::filesystem::remove(path);
    EXPECT_EQ(counted.data("key"), std::nullopt);

    write(newText);
    EXPECT_EQ(counted.data("key"), "new");
}

TEST_F(DefaultsInMemoryTest, RemovedFolderIsSeen) {
    rememberOld();

    std::filesystem::remove_all(path.parent_path());

    EXPECT_EQ(counted.data("key"), std::nullopt);
}

TEST_F(DefaultsInMemoryTest, FolderInPlaceOfTheFileIsSeen) {
    rememberOld();

    std::filesystem::remove(path);
    std::filesystem::create_directory(path);

    EXPECT_EQ(counted.data("key"), std::nullopt);
}

TEST_F(DefaultsInMemoryTest, LinkThatLeadsElsewhereNowIsSeen) {
    const auto target = [&](const char* name) { return folder.path() / name; };
    support::writeFile(target("first"), oldText);
    support::writeFile(target("second"), newText);
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::create_symlink(target("first"), path);
    EXPECT_EQ(counted.data("key"), "old");

    std::filesystem::remove(path);
    std::filesystem::create_symlink(target("second"), path);

    EXPECT_EQ(counted.data("key"), "new");
}

TEST_F(DefaultsInMemoryTest, LossOfTheRightToReadIsSeen) {
    rememberOld();
    const auto lost = [&] {
        const bool hadValue = becomeOrdinaryUser() && counted.data("key") == "old";
        return hadValue && chmod(path.c_str(), 0) == 0 && !counted.data("key") ? 0 : 1;
    };

    EXPECT_EQ(ForkedProcess(lost).wait(), 0);
}

TEST_F(DefaultsInMemoryTest, FileIsReadEachTimeUntilItsLastChangeIsThreeSecondsOld) {
    write(oldText);
    const system_clock::time_point changed(
        std::chrono::duration_cast<system_clock::duration>(version().changed));

    for (const std::chrono::microseconds later : {-1'000'000us, 0us, 2'999'999us}) {
        reads = 0;
        now = changed + later;
        counted.data("key");
        counted.data("key");
        EXPECT_EQ(reads, 2) << later.count();
    }

    reads = 0;
    now = changed + 3s + 1us;
    counted.data("key");
    counted.data("key");
    EXPECT_EQ(reads, 1);
}

TEST_F(DefaultsInMemoryTest, FileModifiedInTheFutureIsReadEachTime) {
    write(oldText);
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() + 2h);

    counted.data("key");
    counted.data("key");

    EXPECT_EQ(reads, 2);
}

}  // namespace
}  // namespace tavrel
