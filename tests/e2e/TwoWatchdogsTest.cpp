#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/layout/Identity.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/posix/FileUserDefaults.h"
#include "tests/e2e/Session.h"
#include "tests/support/TemporaryFolder.h"
#include "watchdog/application/WatchdogProcess.h"

/// Two watchdogs of one user switch at the same moment, and note it in one store.
namespace tavrel::e2e {
namespace {

using support::waitUntil;
using testing::UnorderedElementsAre;
using watchdog::Message;
using watchdog::Received;
using watchdog::WatchdogProcess;

constexpr std::chrono::seconds answerTimeout{60};

class TwoWatchdogsTest : public testing::Test {
protected:
    struct Pair {
        std::unique_ptr<WatchdogProcess> watchdog;
        DisplayID display = 0;
    };

    void SetUp() override {
        setenv("DISPLAY", desktop.displayName().c_str(), 1);
        setenv("XDG_CONFIG_HOME", home.configFolder().c_str(), 1);
        for (Pair& each : pairs) {
            each.watchdog = WatchdogProcess::start(TAVREL_WATCHDOG);
            ASSERT_NE(each.watchdog, nullptr);
            ASSERT_EQ(each.watchdog->link().receive(answerTimeout),
                      Received(Message{.kind = Message::Kind::ready}));
        }
    }

    /// The dummy driver's monitors have no EDID.
    static DisplayID idOf(const std::string& output) {
        return layout::stableHash(output + "/0/0/0");
    }

    /// Each is told before any has answered.
    void bothSwitch(Message::Kind kind) {
        ++id;
        for (Pair& each : pairs) {
            ASSERT_TRUE(
                each.watchdog->link().send({.kind = kind, .id = id, .display = each.display}));
        }
        for (Pair& each : pairs) {
            ASSERT_EQ(each.watchdog->link().receive(answerTimeout),
                      Received(Message{.kind = Message::Kind::answer, .id = id}));
        }
    }

    std::vector<DisplayID> named() const {
        FileUserDefaults store(home.defaultsFile());
        std::vector<DisplayID> displays;
        for (const layout::RememberedOutput& each : layout::RememberedOutputs(store).all()) {
            displays.push_back(each.display);
        }
        return displays;
    }

    /// A slow disk is waited for only so long before an answer, and is given the rest later.
    bool comesToName(std::size_t count) const {
        return waitUntil([&] { return named().size() == count; });
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    const std::vector<support::Monitor> atFirst = desktop.monitors();
    support::UserHome home;
    std::array<Pair, 2> pairs{{{nullptr, idOf("DUMMY0")}, {nullptr, idOf("DUMMY2")}}};
    std::uint32_t id = 0;
};

TEST_F(TwoWatchdogsTest, EachRemembersWhatItSwitchesOffAndForgetsNothingOfTheOthers) {
    constexpr int rounds = 40;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        bothSwitch(Message::Kind::switchOff);
        ASSERT_EQ(desktop.monitorsOn(), 1);
        ASSERT_TRUE(comesToName(2));
        ASSERT_THAT(named(), UnorderedElementsAre(pairs[0].display, pairs[1].display));

        bothSwitch(Message::Kind::switchOn);
        ASSERT_EQ(desktop.monitors(), atFirst);
        ASSERT_TRUE(comesToName(0));
    }
}

TEST_F(TwoWatchdogsTest, WhenBothAreKilledTheNextStartSwitchesOnWhatEachLeftOff) {
    bothSwitch(Message::Kind::switchOff);
    ASSERT_TRUE(comesToName(2));
    for (Pair& each : pairs) {
        each.watchdog->kill();
    }
    ASSERT_EQ(desktop.monitorsOn(), 1);

    const Session session(desktop, home);
    ASSERT_TRUE(session.says("Found 3 displays"));

    EXPECT_EQ(desktop.monitors(), atFirst);
    EXPECT_TRUE(comesToName(0));
}

}  // namespace
}  // namespace tavrel::e2e
