#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/scenario/GnomeStage.h"
#include "tests/support/PluggedMonitors.h"

/// Monitors are plugged in at a real GNOME compositor and pulled out of it.
namespace tavrel::e2e {
namespace {

using scenario::Display;

constexpr const char* restored = "Display setup changed — available screens restored";

class GnomeHotPlugTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::GnomeDesktop::isInstalled() || !support::PluggedMonitors::isInstalled()) {
            GTEST_SKIP() << "mutter or PipeWire is not installed";
        }
    }
    void begin(const std::vector<std::string>& monitors) {
        stage.emplace(TAVREL_PROGRAM, monitors);
        monitorsToPlug.emplace(stage->desktop(), TAVREL_VIRTUAL_MONITOR);
    }

    /// Longer than the application takes what happens for the echo of its own switching.
    static void letItsOwnEchoPass() {
        std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    }

    bool isOn(const std::string& connector) { return stage->desktop().screen(connector).isOn; }
    bool shows(const std::string& footer) {
        return stage->await([&] { return stage->window().footer == footer; });
    }
    Display rowOf(const std::string& connector) {
        stage->lookAgain();
        const std::vector<std::string>& all = stage->outputs();
        return static_cast<Display>(std::find(all.begin(), all.end(), connector) - all.begin());
    }
    std::size_t rowsOn() {
        const auto rows = stage->window().rows;
        return static_cast<std::size_t>(
            std::count_if(rows.begin(), rows.end(), [](const auto& row) { return row.isOn; }));
    }

    std::optional<scenario::GnomeStage> stage;
    std::optional<support::PluggedMonitors> monitorsToPlug;
};

TEST_F(GnomeHotPlugTest, WhatThePullingOutOfAMonitorTakesAlongComesBack) {
    begin(support::GnomeDesktop::threeMonitors());
    stage->flip(rowOf("Meta-1"));
    ASSERT_TRUE(stage->await([&] { return !isOn("Meta-1"); }));
    letItsOwnEchoPass();

    // The compositor lays all out that there is, and the application sees to it too.
    const std::string plugged = monitorsToPlug->plug(1024, 768);
    EXPECT_TRUE(stage->await([&] { return stage->window().rows.size() == 4 && rowsOn() == 4; }));
    EXPECT_TRUE(isOn("Meta-1"));
    ASSERT_TRUE(shows(restored));
    letItsOwnEchoPass();
    // It goes back to what it had before that one came, with the other off.
    monitorsToPlug->unplug(plugged);

    stage->lookAgain();
    EXPECT_TRUE(stage->await([&] { return stage->server() == stage->serverAtFirst(); }))
        << stage->server();
    EXPECT_TRUE(stage->await([&] { return rowsOn() == 3; })) << stage->window();
}

TEST_F(GnomeHotPlugTest, WhatIsOffIsOnWhenTheOtherHasBeenPulledOut) {
    begin({"1280x1024"});
    const std::string plugged = monitorsToPlug->plug(1024, 768);
    ASSERT_TRUE(stage->await([&] { return rowsOn() == 2; })) << stage->window();
    const Display first = rowOf("Meta-0");
    stage->flip(first);
    ASSERT_TRUE(stage->await([&] { return !isOn("Meta-0") && rowsOn() == 1; }));
    letItsOwnEchoPass();

    monitorsToPlug->unplug(plugged);

    EXPECT_TRUE(stage->await([&] { return isOn("Meta-0"); }));
    EXPECT_TRUE(stage->await([&] {
        const auto rows = stage->window().rows;
        return rows.size() == 2 && rows[first].isOn && rowsOn() == 1;
    })) << stage->window();
    EXPECT_FALSE(stage->window().rows.at(first).isSwitchEnabled) << "it is the last one";
}

}  // namespace
}  // namespace tavrel::e2e
