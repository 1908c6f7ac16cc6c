#include "platform/posix/SessionLock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <optional>

#include "tests/support/ScopedVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel {
namespace {

using support::ScopedVariable;

/// A copy of this process that does something and ends with status 0.
pid_t startCopy(const std::function<void()>& task) {
    const pid_t copy = fork();
    if (copy == 0) {
        task();
        _exit(EXIT_SUCCESS);
    }
    return copy;
}

class SessionLockTest : public testing::Test {
protected:
    /// What another process finds.
    bool isHeld() const {
        const pid_t other = startCopy([this] {
            if (SessionLock(file).isHeldByAnother()) {
                _exit(EXIT_FAILURE);
            }
        });
        int status = 0;
        EXPECT_EQ(waitpid(other, &status, 0), other);
        EXPECT_TRUE(WIFEXITED(status));
        return WEXITSTATUS(status) == EXIT_FAILURE;
    }

    support::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "lock";
};

TEST_F(SessionLockTest, OneHasItUntilItLetsGo) {
    std::optional<SessionLock> first(std::in_place, file);
    EXPECT_FALSE(first->isHeldByAnother());
    EXPECT_TRUE(isHeld());

    first.reset();

    EXPECT_FALSE(isHeld());
}

TEST_F(SessionLockTest, AChildThatOutlivesItsHolderDoesNotHaveIt) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    // Killed while it starts a program, the holder leaves behind what has not become that yet.
    const pid_t holder = startCopy([&] {
        const SessionLock its(file);
        const pid_t child = startCopy([] { pause(); });
        if (write(ends[1], &child, sizeof child) == sizeof child) {
            raise(SIGKILL);
        }
    });
    pid_t child = 0;
    ASSERT_EQ(read(ends[0], &child, sizeof child), ssize_t{sizeof child});
    ASSERT_EQ(waitpid(holder, nullptr, 0), holder);

    EXPECT_FALSE(SessionLock(file).isHeldByAnother());
    kill(child, SIGKILL);
}

TEST_F(SessionLockTest, AFileThatWasLeftBehindLocksNothing) {
    support::writeFile(file, "from a process that was killed");

    const SessionLock lock(file);

    EXPECT_FALSE(lock.isHeldByAnother());
    EXPECT_TRUE(isHeld());
}

TEST_F(SessionLockTest, WhereThereCanBeNoFileNobodyIsKeptAway) {
    EXPECT_FALSE(SessionLock(folder.path() / "missing" / "lock").isHeldByAnother());
    EXPECT_FALSE(SessionLock("").isHeldByAnother());
}

TEST_F(SessionLockTest, EachDisplayServerIsASessionOfItsOwn) {
    const ScopedVariable runtime("XDG_RUNTIME_DIR", folder.path().c_str());
    const ScopedVariable wayland("WAYLAND_DISPLAY", nullptr);
    const auto pathOn = [](const char* display) {
        const ScopedVariable variable("DISPLAY", display);
        return sessionLockPath("name");
    };

    EXPECT_EQ(pathOn(":7"), folder.path() / "name:7.lock");
    EXPECT_NE(pathOn(":8"), pathOn(":7"));
    EXPECT_EQ(pathOn("/a/b:0").parent_path(), folder.path());
    const ScopedVariable compositor("WAYLAND_DISPLAY", "wayland-1");
    EXPECT_EQ(pathOn(":7"), folder.path() / "namewayland-1.lock");
}

TEST_F(SessionLockTest, WithoutARuntimeFolderItIsInOneOfTheUsersOwn) {
    const ScopedVariable runtime("XDG_RUNTIME_DIR", nullptr);
    const ScopedVariable temporary("TMPDIR", folder.path().c_str());

    const std::filesystem::path made = sessionLockPath("name").parent_path();

    EXPECT_EQ(made.parent_path(), folder.path());
    EXPECT_EQ(std::filesystem::status(made).permissions(), std::filesystem::perms::owner_all);
    EXPECT_EQ(sessionLockPath("name").parent_path(), made) << "the next time too";

    std::filesystem::permissions(made, std::filesystem::perms::all);
    EXPECT_EQ(sessionLockPath("name"), "") << "where others can put links";
}

}  // namespace
}  // namespace tavrel
