#include <gmock/gmock.h>
#include <xcb/randr.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/x11/snapshot/SnapshotReader.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/connection/RequestRelay.h"
#include "tests/support/XConnection.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

/// What we ask of a server that matters here, in the order in which it gets it.
enum class Step { probe, grab, ungrab };

/// Writes down when a server is made to look for monitors.
class ProbingTest : public LiveServerTest {
protected:
    void note(RequestRelay::Request request) {
        constexpr std::uint8_t grabServer = 36;
        constexpr std::uint8_t ungrabServer = 37;
        constexpr std::uint8_t getScreenResources = 8;
        constexpr std::uint8_t getOutputInfo = 9;
        if (request.opcode == grabServer) {
            add(Step::grab);
            std::exchange(beforeGrab, [] {})();
        } else if (request.opcode == ungrabServer) {
            add(Step::ungrab);
        } else if (request.opcode == randrOpcode && request.minor == getScreenResources) {
            add(Step::probe);
        } else if (request.opcode == randrOpcode && request.minor == getOutputInfo) {
            ++questionsAboutOutputs;
        }
    }

    void add(Step step) {
        const std::lock_guard lock(mutex);
        steps.push_back(step);
    }

    std::vector<Step> takeSteps() {
        const std::lock_guard lock(mutex);
        return std::exchange(steps, {});
    }

    /// Another program has an output show something that counts as disconnected.
    void driveAnUnknownMonitor() const {
        other.run({"--addmode", "DUMMY3", "1920x1080"});
        other.run({"--output", "DUMMY3", "--mode", "1920x1080", "--pos", "0x1080"});
    }

    const std::uint8_t randrOpcode = [this] {
        const support::XConnection connection(desktop.displayName());
        return xcb_get_extension_data(connection.get(), &xcb_randr_id)->major_opcode;
    }();
    std::mutex mutex;
    std::vector<Step> steps;
    std::atomic<std::size_t> questionsAboutOutputs = 0;
    std::function<void()> beforeGrab = [] {};
    RequestRelay relay{desktop.displayName(),
                       [this](RequestRelay::Request request) { note(request); }};
    X11WindowServer observed{store, {.displayName = relay.displayName()}};
};

TEST_F(ProbingTest, AQuestionNeverMakesTheServerLook) {
    EXPECT_THAT(observed.now()->onlineDisplays(), testing::Optional(SizeIs(3)));
    driveAnUnknownMonitor();
    EXPECT_TRUE(observed.now()->isActive(idOf("DUMMY0")));
    EXPECT_TRUE(observed.canSwitch());

    EXPECT_THAT(takeSteps(), testing::IsEmpty());
}

TEST_F(ProbingTest, WhoeverAsksWhatThereIsMakesItLook) {
    driveAnUnknownMonitor();
    ASSERT_THAT(observed.now()->onlineDisplays(), testing::Optional(SizeIs(3)));

    EXPECT_THAT(observed.nowAfterProbing()->onlineDisplays(), testing::Optional(SizeIs(4)));

    EXPECT_THAT(takeSteps(), ElementsAre(Step::probe));
    EXPECT_THAT(observed.now()->onlineDisplays(), testing::Optional(SizeIs(4)));
}

TEST_F(ProbingTest, SwitchingOnFindsWhatTheServerDoesNotKnowYet) {
    driveAnUnknownMonitor();

    EXPECT_EQ(observed.setDisplayEnabled(idOf("DUMMY3"), true), serverStatus::success);

    EXPECT_TRUE(desktop.monitor("DUMMY3").on);
    EXPECT_THAT(takeSteps(), ElementsAre(Step::probe, Step::grab, Step::ungrab));
}

TEST_F(ProbingTest, SwitchingOnReadsTheLayoutOnceBeforeAndOnceAfter) {
    const auto connection = x11::Connection::connect({.displayName = desktop.displayName()});
    const std::size_t outputs = x11::readSnapshot(*connection, x11::Probing::never)->outputs.size();
    ASSERT_EQ(observed.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);
    questionsAboutOutputs = 0;

    ASSERT_EQ(observed.setDisplayEnabled(idOf("DUMMY1"), true), serverStatus::success);

    EXPECT_EQ(questionsAboutOutputs, 2 * outputs);
}

TEST_F(ProbingTest, ALookForMonitorsIsNotedForTheLayoutThatItFinds) {
    const auto connection = x11::Connection::connect({.displayName = desktop.displayName()});

    const auto found = x11::lookForMonitors(*connection);

    ASSERT_TRUE(found.has_value());
    EXPECT_TRUE(connection->hasProbed(found->layoutTimestamp, found->configTimestamp));
}

TEST_F(ProbingTest, TheServerIsNotMadeToLookWhileItIsGrabbed) {
    for (const bool enabled : {false, true}) {
        beforeGrab = [this] { driveAnUnknownMonitor(); };
        EXPECT_EQ(observed.setDisplayEnabled(idOf("DUMMY1"), enabled), serverStatus::success);

        const std::vector<Step> seen = takeSteps();
        const auto grab = std::find(seen.begin(), seen.end(), Step::grab);
        ASSERT_NE(grab, seen.end());
        EXPECT_EQ(std::count(seen.begin(), grab, Step::probe), enabled ? 1 : 0);
        EXPECT_THAT(std::vector(grab, seen.end()), ElementsAre(Step::grab, Step::ungrab));
        other.switchOff("DUMMY3");
    }
}

}  // namespace
}  // namespace tavrel
