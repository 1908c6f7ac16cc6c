#include "platform/posix/Process.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "platform/posix/WakeUp.h"

namespace tavrel {
namespace {

/// Ends this process with what a write to a pipe that nobody reads comes to.
[[noreturn]] void exitWithErrorOfWrite() {
    Pipe pipe;
    pipe.readEnd.close();
    const char byte = 0;
    const ssize_t written = ::write(pipe.writeEnd.number(), &byte, sizeof byte);
    std::_Exit(written < 0 ? errno : EXIT_SUCCESS);
}

TEST(BrokenPipesTest, EndTheProcessUnlessIgnored) {
    std::signal(SIGPIPE, SIG_DFL);

    EXPECT_EXIT(exitWithErrorOfWrite(), testing::KilledBySignal(SIGPIPE), "");
}

TEST(BrokenPipesTest, AreAnErrorOfTheWriteOnceIgnored) {
    std::signal(SIGPIPE, SIG_DFL);
    ignoreBrokenPipes();

    EXPECT_EXIT(exitWithErrorOfWrite(), testing::ExitedWithCode(EPIPE), "");
}

}  // namespace
}  // namespace tavrel
