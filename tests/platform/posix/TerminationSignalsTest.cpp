#include "platform/posix/TerminationSignals.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>
#include <csignal>
#include <optional>

namespace tavrel {
namespace {

bool isReadable(int descriptor) {
    pollfd each{descriptor, POLLIN, 0};
    return ::poll(&each, 1, 0) == 1 && each.revents == POLLIN;
}

class TerminationSignalsTest : public testing::TestWithParam<int> {};

TEST_P(TerminationSignalsTest, MakesTheDescriptorReadableForGood) {
    const TerminationSignals signals;
    EXPECT_FALSE(isReadable(signals.descriptor()));
    ::raise(GetParam());
    EXPECT_TRUE(isReadable(signals.descriptor()));
    ::raise(GetParam());
    EXPECT_TRUE(isReadable(signals.descriptor()));
}

TEST_P(TerminationSignalsTest, GivesTheDefaultEffectBack) {
    EXPECT_EXIT(
        {
            std::optional<TerminationSignals> signals(std::in_place);
            signals.reset();
            ::raise(GetParam());
        },
        testing::KilledBySignal(GetParam()), "");
}

TEST_P(TerminationSignalsTest, NeverBlocksHoweverManyComeAndLeavesErrnoAsItWas) {
    const TerminationSignals signals;
    errno = ENOENT;
    // Above what a pipe holds, so that the last ones cannot be written.
    for (int i = 0; i < 100'000; ++i) {
        ::raise(GetParam());
    }
    EXPECT_EQ(errno, ENOENT);
    EXPECT_TRUE(isReadable(signals.descriptor()));
}

TEST_P(TerminationSignalsTest, IsNotInheritedByStartedPrograms) {
    const TerminationSignals signals;
    EXPECT_NE(::fcntl(signals.descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

INSTANTIATE_TEST_SUITE_P(Each, TerminationSignalsTest, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& each) {
                             return each.param == SIGTERM  ? "Terminate"
                                    : each.param == SIGINT ? "Interrupt"
                                                           : "HangUp";
                         });

}  // namespace
}  // namespace tavrel
