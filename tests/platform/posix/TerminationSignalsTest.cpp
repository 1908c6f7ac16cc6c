#include "platform/posix/Process.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <optional>

#include "tests/platform/posix/IsReadable.h"

namespace tavrel {
namespace {

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

TEST_P(TerminationSignalsTest, NeverBlocksHoweverManyArriveAndLeavesErrnoAsItWas) {
    const TerminationSignals signals;
    errno = ENOENT;

    // More than a pipe holds, so that the last ones cannot be written.
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
