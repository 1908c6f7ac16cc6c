#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <ostream>
#include <set>
#include <vector>

#include "tests/e2e/KillRounds.h"
#include "tests/scenario/GnomeStage.h"
#include "tests/scenario/Stories.h"
#include "tests/watchdog/Processes.h"

namespace tavrel::scenario {

static void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

namespace {

/// The stories of three displays that can be told here: the compositor lets no program switch
/// off the last display, nor claim keys.
std::vector<Scenario> tellable() {
    const std::set<std::string> others{"AllSwitchedOffElsewhereComeBackByThemselves",
                                       "TheLastOneSwitchedOffElsewhereBringsAllBack",
                                       "TheHotKeyWakesAll"};
    std::vector<Scenario> stories;
    for (const auto* all :
         {&switchingStories(), &recoveringStartStories(), &recoveryStories(), &crashStories()}) {
        for (const Scenario& each : *all) {
            if (each.displays == 3 && !others.contains(each.name)) {
                stories.push_back(each);
            }
        }
    }
    return stories;
}

class GnomeStoryTest : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override {
        if (!support::GnomeDesktop::isInstalled()) {
            GTEST_SKIP() << "mutter is not installed";
        }
    }
};

TEST_P(GnomeStoryTest, ComesTrue) {
    GnomeStage stage(TAVREL_PROGRAM);

    const auto failure = play(GetParam(), stage);

    EXPECT_FALSE(failure) << *failure;
}

INSTANTIATE_TEST_SUITE_P(All, GnomeStoryTest, testing::ValuesIn(tellable()),
                         [](const auto& each) { return each.param.name; });

class GnomeApplicationTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::GnomeDesktop::isInstalled()) {
            GTEST_SKIP() << "mutter is not installed";
        }
        stage.emplace(TAVREL_PROGRAM);
    }

    std::vector<pid_t> watchdogs() {
        return tavrel::watchdog::processesOf(TAVREL_WATCHDOG,
                                             "WAYLAND_DISPLAY=" + stage->desktop().displayName());
    }
    bool isAsAtFirst() { return stage->server() == stage->serverAtFirst(); }

    std::optional<GnomeStage> stage;
};

TEST_F(GnomeApplicationTest, ItsWindowIsANativeOne) {
    std::ifstream maps("/proc/" + std::to_string(stage->application().pid()) + "/maps");
    const std::string mapped{std::istreambuf_iterator<char>(maps), {}};

    EXPECT_NE(mapped.find("libQt6WaylandClient"), std::string::npos);
    EXPECT_EQ(mapped.find("libqxcb.so"), std::string::npos);
}

TEST_F(GnomeApplicationTest, AWatchdogThatIsKilledIsReplacedAndTheNextOneKnowsWhatIsOff) {
    stage->flip(1);
    ASSERT_TRUE(stage->await([&] { return !stage->server()[1].isOn; }));
    std::vector<pid_t> first;
    ASSERT_TRUE(stage->await([&] { return (first = watchdogs()).size() == 1; }));

    ::kill(first.front(), SIGKILL);
    ASSERT_TRUE(stage->await([&] {
        const std::vector<pid_t> now = watchdogs();
        return now.size() == 1 && now != first;
    }));
    // It is told first; what it does after that shows that it knows.
    stage->flip(2);
    ASSERT_TRUE(stage->await([&] { return !stage->server()[2].isOn; }));
    stage->crashApplication();

    EXPECT_TRUE(stage->await([&] { return isAsAtFirst(); }));
}

TEST_F(GnomeApplicationTest, ACompositorThatHangsForAWhileIsWaitedFor) {
    stage->flip(1);
    ASSERT_TRUE(stage->await([&] { return stage->window().footer.ends_with(" is off"); }));
    const std::vector<pid_t> watchdog = watchdogs();
    stage->desktop().pause();
    stage->flip(2);
    // Longer than questions wait for an answer.
    std::this_thread::sleep_for(
        std::chrono::seconds(e2e::fromEnvironment("TAVREL_HANG_SECONDS", 4)));

    stage->desktop().resume();

    EXPECT_TRUE(stage->await([&] { return !stage->server()[1].isOn && !stage->server()[2].isOn; }));
    EXPECT_EQ(watchdogs(), watchdog) << "nobody is taken for hanging but the compositor";
    EXPECT_TRUE(stage->server()[0].isOn);
    stage->pressWake();
    EXPECT_TRUE(stage->await([&] { return isAsAtFirst(); }));
}

TEST_F(GnomeApplicationTest, KillsAtAnyMomentLoseNoScreen) {
    e2e::KillRounds(*stage, [&] { return watchdogs(); }).run();
}

}  // namespace
}  // namespace tavrel::scenario
