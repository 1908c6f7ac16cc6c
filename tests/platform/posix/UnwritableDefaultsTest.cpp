#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <functional>
#include <memory>

#include "platform/posix/BufferedUserDefaults.h"
#include "tests/platform/posix/FileUserDefaultsFixture.h"
#include "tests/platform/posix/ForkedProcess.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

/// Stores that the system refuses to write, each made so and made writable again in a child
/// process without special rights.
class UnwritableDefaultsTest : public FileUserDefaultsTest {
protected:
    enum Outcome { keptAndWrittenLater, unprepared, notKept, wasWritable, notWrittenLater };

    using Step = std::function<bool()>;

    /// What becomes of a new value that is stored between `breakStore` and `mendStore`.
    Outcome storeBetween(const Step& breakStore, const Step& mendStore) {
        store.setData("key", "old");
        ForkedProcess child([&]() -> int {
            BufferedUserDefaults buffered(
                std::make_unique<FileUserDefaults>(path),
                {.timeout = std::chrono::hours(1), .retryInterval = std::chrono::milliseconds(10)});
            if (!becomeOrdinaryUser() || buffered.data("key") != "old" || !breakStore()) {
                return unprepared;
            }
            if (!buffered.setData("key", newValue) || buffered.data("key") != newValue) {
                return notKept;
            }
            if (isOnDisk()) {
                return wasWritable;
            }
            return mendStore() && support::waitUntil([&] { return isOnDisk(); })
                       ? keptAndWrittenLater
                       : notWrittenLater;
        });
        return static_cast<Outcome>(child.wait());
    }

    Outcome storeWithMode(mode_t mode, const std::filesystem::path& changed) {
        return storeBetween([&] { return chmod(changed.c_str(), mode) == 0; },
                            [&] { return chmod(changed.c_str(), 0700) == 0; });
    }

    bool isOnDisk() const { return FileUserDefaults(path).data("key") == newValue; }

    const std::string newValue = std::string(5000, 'x');
};

TEST_F(UnwritableDefaultsTest, ReadOnlyFolder) {
    EXPECT_EQ(storeWithMode(0500, path.parent_path()), keptAndWrittenLater);
}

TEST_F(UnwritableDefaultsTest, FolderThatMayNotBeEntered) {
    EXPECT_EQ(storeWithMode(0000, path.parent_path()), keptAndWrittenLater);
}

TEST_F(UnwritableDefaultsTest, FileOfSomebodyElse) {
    EXPECT_EQ(storeWithMode(0000, path), keptAndWrittenLater);
}

TEST_F(UnwritableDefaultsTest, LockOfSomebodyElse) {
    EXPECT_EQ(storeWithMode(0000, beside(".lock")), keptAndWrittenLater);
}

TEST_F(UnwritableDefaultsTest, HomeThatIsMissingForAWhile) {
    const auto home = path.parent_path().parent_path();
    const auto elsewhere = folder.path() / "elsewhere";
    const auto move = [](const auto& from, const auto& to) {
        return std::rename(from.c_str(), to.c_str()) == 0;
    };
    const auto breakStore = [&] {
        // A file in its place, so that the home is not made anew.
        support::writeFile(folder.path() / "file", "");
        return move(home, elsewhere) && move(folder.path() / "file", home);
    };
    const auto mendStore = [&] { return std::filesystem::remove(home) && move(elsewhere, home); };

    EXPECT_EQ(storeBetween(breakStore, mendStore), keptAndWrittenLater);
}

TEST_F(UnwritableDefaultsTest, FullDisk) {
    // Without a handler, writing more than the limit would end the process.
    const auto limitFiles = [](rlim_t size) {
        const rlimit limit{size, RLIM_INFINITY};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };

    EXPECT_EQ(
        storeBetween([&] { return limitFiles(1000); }, [&] { return limitFiles(RLIM_INFINITY); }),
        keptAndWrittenLater);
}

}  // namespace
}  // namespace tavrel
