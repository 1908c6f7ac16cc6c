#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/platform/posix/FileUserDefaultsFixture.h"
#include "tests/platform/posix/ForkedProcess.h"

namespace tavrel {
namespace {

/// Writes that the system refuses. They run in child processes, which first give up rights
/// or set limits for themselves.
class RefusedWritesTest : public FileUserDefaultsTest {
protected:
    enum Outcome { stored, refused, unprepared };

    /// The outcome of storing `value` in a process in which `prepare` was called.
    template <class Prepare>
    Outcome storeAfter(Prepare prepare, const std::string& value) {
        ForkedProcess child([&] {
            return !prepare() ? unprepared : store.setData("key", value) ? stored : refused;
        });
        return static_cast<Outcome>(child.wait());
    }

    /// The outcome of storing a new value while `changed` has the rights `mode`.
    Outcome storeWithMode(mode_t mode, const std::filesystem::path& changed) {
        const Outcome outcome = storeAfter(
            [&] { return becomeOrdinaryUser() && chmod(changed.c_str(), mode) == 0; }, "new");
        chmod(changed.c_str(), 0700);
        return outcome;
    }

    /// The outcome of storing `value` when no file can grow beyond `maxSize` bytes, so that a
    /// longer write stops halfway, as it does on a full disk.
    Outcome storeOnFullDisk(rlim_t maxSize, const std::string& value) {
        const auto limitFiles = [&] {
            const rlimit limit{maxSize, maxSize};
            std::signal(SIGXFSZ, SIG_IGN);
            return setrlimit(RLIMIT_FSIZE, &limit) == 0;
        };
        return storeAfter(limitFiles, value);
    }
};

TEST_F(RefusedWritesTest, ReadOnlyFolderKeepsTheOldValueAndNothingElse) {
    store.setData("key", "old");

    EXPECT_EQ(storeWithMode(0500, path.parent_path()), refused);
    EXPECT_EQ(store.data("key"), "old");
    EXPECT_EQ(names(), fileAndLock);
}

TEST_F(RefusedWritesTest, ReadOnlyFolderWithoutALockFileRefuses) {
    write(R"({"key":"old"})");

    EXPECT_EQ(storeWithMode(0500, path.parent_path()), refused);
    EXPECT_EQ(store.data("key"), "old");
    EXPECT_EQ(names(), Names{"defaults.json"});
}

TEST_F(RefusedWritesTest, FileInPlaceOfTheFolderRefuses) {
    support::writeFile(path.parent_path(), "a file where a folder should be");

    EXPECT_FALSE(store.setData("key", "value"));
    EXPECT_EQ(store.data("key"), std::nullopt);
    EXPECT_EQ(support::readFile(path.parent_path()), "a file where a folder should be");
}

TEST_F(RefusedWritesTest, FolderThatMayNotBeMadeRefuses) {
    EXPECT_EQ(storeWithMode(0500, folder.path()), refused);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(RefusedWritesTest, FileThatMayNotBeReadIsNotOverwritten) {
    store.setData("key", "old");

    EXPECT_EQ(storeWithMode(0000, path), refused);
    EXPECT_EQ(store.data("key"), "old");
}

TEST_F(RefusedWritesTest, FullDiskKeepsTheOldValueAndNothingElse) {
    store.setData("key", "old");

    EXPECT_EQ(storeOnFullDisk(1000, std::string(5000, 'x')), refused);
    EXPECT_EQ(store.data("key"), "old");
    EXPECT_EQ(names(), fileAndLock);

    EXPECT_EQ(storeOnFullDisk(1000, "short"), stored);
    EXPECT_EQ(store.data("key"), "short");
}

TEST_F(RefusedWritesTest, DamagedFileStaysInPlaceWhileTheDiskIsFull) {
    write("damaged");

    EXPECT_EQ(storeOnFullDisk(2, "new"), refused);
    EXPECT_EQ(contents(), "damaged");
    EXPECT_EQ(names(), fileAndLock);
}

}  // namespace
}  // namespace tavrel
