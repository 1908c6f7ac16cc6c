#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/platform/posix/FileUserDefaultsFixture.h"
#include "tests/platform/posix/ForkedProcess.h"

namespace tavrel {
namespace {

using testing::UnorderedElementsAre;

/// Writes that the system refuses. They run in processes of their own, which give up
/// rights or take on limits first.
class RefusedWritesTest : public FileUserDefaultsTest {
protected:
    enum Outcome { stored, refused, unprepared };

    /// What storing `value` comes to in a process that has called `prepare`.
    template <class Prepare>
    Outcome storeAfter(Prepare prepare, const std::string& value) {
        ForkedProcess child([&] {
            return !prepare() ? unprepared : store_.setData("key", value) ? stored : refused;
        });
        return static_cast<Outcome>(child.wait());
    }
};

TEST_F(RefusedWritesTest, ReadOnlyFolderKeepsTheOldValueAndNothingElse) {
    store_.setData("key", "old");
    const auto readOnly = [&] {
        return becomeOrdinaryUser() && chmod(path_.parent_path().c_str(), 0500) == 0;
    };

    EXPECT_EQ(storeAfter(readOnly, "new"), refused);
    EXPECT_EQ(store_.data("key"), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("defaults.json", "defaults.json.lock"));
    chmod(path_.parent_path().c_str(), 0700);
}

TEST_F(RefusedWritesTest, ReadOnlyFolderWithoutALockFileRefuses) {
    write(R"({"key":"old"})");
    const auto readOnly = [&] {
        return becomeOrdinaryUser() && chmod(path_.parent_path().c_str(), 0500) == 0;
    };

    EXPECT_EQ(storeAfter(readOnly, "new"), refused);
    EXPECT_EQ(store_.data("key"), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("defaults.json"));
    chmod(path_.parent_path().c_str(), 0700);
}

TEST_F(RefusedWritesTest, FolderThatCannotBeMadeRefuses) {
    support::writeFile(path_.parent_path(), "a file where a folder should be");

    EXPECT_FALSE(store_.setData("key", "value"));
    EXPECT_EQ(store_.data("key"), std::nullopt);
    EXPECT_EQ(support::readFile(path_.parent_path()), "a file where a folder should be");
}

TEST_F(RefusedWritesTest, FolderThatMayNotBeMadeRefuses) {
    const auto readOnly = [&] {
        return becomeOrdinaryUser() && chmod(folder_.path().c_str(), 0500) == 0;
    };

    EXPECT_EQ(storeAfter(readOnly, "value"), refused);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
    chmod(folder_.path().c_str(), 0700);
}

TEST_F(RefusedWritesTest, FileThatMayNotBeReadIsNotOverwritten) {
    store_.setData("key", "old");
    const auto unreadable = [&] { return becomeOrdinaryUser() && chmod(path_.c_str(), 0) == 0; };

    EXPECT_EQ(storeAfter(unreadable, "new"), refused);
    chmod(path_.c_str(), 0600);
    EXPECT_EQ(store_.data("key"), "old");
}

TEST_F(RefusedWritesTest, FullDiskKeepsTheOldValueAndNothingElse) {
    store_.setData("key", "old");
    // A limit on the size of files makes a long write stop halfway, as a full disk does.
    const auto fillDisk = [] {
        const rlimit limit{1000, 1000};
        std::signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };

    EXPECT_EQ(storeAfter(fillDisk, std::string(5000, 'x')), refused);
    EXPECT_EQ(store_.data("key"), "old");
    EXPECT_THAT(names(), UnorderedElementsAre("defaults.json", "defaults.json.lock"));
    EXPECT_EQ(storeAfter(fillDisk, "short"), stored);
    EXPECT_EQ(store_.data("key"), "short");
}

TEST_F(RefusedWritesTest, DamagedFileStaysInPlaceWhileTheDiskIsFull) {
    write("damaged");
    const auto fillDisk = [] {
        const rlimit limit{2, 2};
        std::signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };

    EXPECT_EQ(storeAfter(fillDisk, "new"), refused);
    EXPECT_EQ(contents(), "damaged");
    EXPECT_THAT(names(), UnorderedElementsAre("defaults.json", "defaults.json.lock"));
}

}  // namespace
}  // namespace tavrel
