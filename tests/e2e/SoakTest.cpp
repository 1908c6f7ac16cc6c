#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>

#include "tests/e2e/FromEnvironment.h"
#include "tests/e2e/ResourceUse.h"
#include "tests/e2e/WatchdogSession.h"
#include "tests/support/DBus.h"

/// The application used for a long time, which must cost nothing that stays.
namespace tavrel::e2e {
namespace {

using std::chrono::steady_clock;
using support::waitUntil;

/// Of the rounds, this part comes before the first look: caches fill, fonts are loaded.
constexpr int warmUpPart = 10;
constexpr int refreshesInARound = 5;
constexpr long toleranceInKibibytes = 1024;
/// Background work that meets other such work for the first time gets a thread, which stays. What
/// would cost a thread each time costs many more than these.
constexpr int toleratedThreads = 2;

class SoakTest : public testing::Test {
protected:
    /// One switch and five refreshes, over and over: TAVREL_SOAK_SWITCHES rounds, spread over
    /// TAVREL_SOAK_SECONDS.
    const int rounds = fromEnvironment("TAVREL_SOAK_SWITCHES", 20);
    const std::chrono::seconds duration{fromEnvironment("TAVREL_SOAK_SECONDS", 0)};
    WatchdogSession run;
    int refreshes = 0;
    support::DBus bus{run.desktop.sessionBusAddress()};

    std::string stored() const {
        std::ifstream file(run.home.defaultsFile());
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Refreshes as a key of the desktop may be bound to, which takes far less time than to look
    /// for the button, and awaits that every display has been seen anew. To ask while the
    /// application still refreshes does nothing, so it may take another.
    void refresh() {
        const std::string before = stored();
        const auto isDone = [&] { return stored() != before; };
        constexpr std::chrono::milliseconds untilAskedAgain{100};
        ASSERT_TRUE(waitUntil([&] {
            bus.call(TAVREL_APPLICATION_ID, objectPath(), "org.freedesktop.Application",
                     "ActivateAction", g_variant_new("(sava{sv})", "refresh", nullptr, nullptr));
            return waitUntil(isDone, untilAskedAgain);
        }));
        ++refreshes;
    }

    static std::string objectPath() {
        std::string path = std::string("/") + TAVREL_APPLICATION_ID;
        std::replace(path.begin(), path.end(), '.', '/');
        return path;
    }

    void playRound(int round) {
        run.press(2);
        // Off in one round, and on in the next.
        const int expected = round % 2 == 0 ? 2 : 3;
        ASSERT_TRUE(waitUntil([&] { return run.desktop.monitorsOn() == expected; }));
        for (int i = 0; i < refreshesInARound; ++i) {
            ASSERT_NO_FATAL_FAILURE(refresh());
        }
    }

    /// Adds a look at the process while it warms up: its memory now, and of the rest the least
    /// so far, for some of it only passes by.
    static void note(pid_t process, std::optional<ResourceUse>& first) {
        const ResourceUse now = ResourceUse::of(process);
        const ResourceUse former = first.value_or(now);
        first = {.writtenMemory = now.writtenMemory,
                 .descriptors = std::min(now.descriptors, former.descriptors),
                 .threads = std::min(now.threads, former.threads)};
    }

    /// Whether nothing that stays was added since `first`. Awaited: what only passes by may be
    /// there at first.
    testing::AssertionResult holdsNoMoreThan(const ResourceUse& first, pid_t process) const {
        ResourceUse now;
        const auto isSame = [&] {
            now = ResourceUse::of(process);
#ifdef TAVREL_INSTRUMENTED
            // A sanitizer keeps what is freed.
            now.writtenMemory = first.writtenMemory;
#endif
            return now.descriptors <= first.descriptors &&
                   now.threads <= first.threads + toleratedThreads &&
                   now.writtenMemory <= first.writtenMemory + toleranceInKibibytes;
        };
        if (waitUntil(isSame)) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure() << "at first " << first << ", now " << now;
    }
};

TEST_F(SoakTest, RefreshesAndSwitchesCostNothingThatStays) {
    ASSERT_TRUE(run.isUp);
    const pid_t application = run.application();
    const pid_t watchdog = run.watchdog();
    const auto started = steady_clock::now();
    const int warmUp = rounds / warmUpPart;
    std::optional<ResourceUse> firstOfApplication;
    std::optional<ResourceUse> firstOfWatchdog;

    for (int round = 0; round < rounds; ++round) {
        ASSERT_NO_FATAL_FAILURE(playRound(round)) << "round " << round;
        if (round <= warmUp) {
            note(application, firstOfApplication);
            note(watchdog, firstOfWatchdog);
        } else if (round % warmUpPart == 0) {
            ASSERT_TRUE(holdsNoMoreThan(*firstOfApplication, application)) << "round " << round;
            ASSERT_TRUE(holdsNoMoreThan(*firstOfWatchdog, watchdog)) << "round " << round;
        }
        std::this_thread::sleep_until(started + duration * (round + 1) / rounds);
    }

    EXPECT_TRUE(holdsNoMoreThan(*firstOfApplication, application));
    EXPECT_TRUE(holdsNoMoreThan(*firstOfWatchdog, watchdog));
    const std::chrono::duration<double> seconds = steady_clock::now() - started;
    std::cout << rounds << " switches and " << refreshes << " refreshes in " << seconds.count()
              << " s\napplication: " << *firstOfApplication << ", in the end "
              << ResourceUse::of(application) << "\nwatchdog: " << *firstOfWatchdog
              << ", in the end " << ResourceUse::of(watchdog) << "\n";
}

}  // namespace
}  // namespace tavrel::e2e
