#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <ostream>

#include "platform/posix/AtomicFile.h"
#include "tests/e2e/Session.h"

namespace tavrel::e2e {
namespace {

using support::Monitor;
using support::waitUntil;

constexpr const char* unwritable =
    "Your displays can’t be saved right now. Tavrel remembers them until it quits and keeps "
    "trying.";

/// A way in which a store cannot be written, for an ordinary user as well as for root.
struct Trouble {
    const char* name;
    /// Makes it so; the environment and the executable with which the application is started.
    std::function<support::Environment(const support::UserHome&)> prepare;
    std::function<std::string(const support::UserHome&)> executable = [](const auto& /*home*/) {
        return program;
    };
};

void PrintTo(const Trouble& trouble, std::ostream* out) {
    *out << trouble.name;
}

support::Environment withFileInPlaceOfTheFolder(const support::UserHome& home) {
    support::writeFile(home.configFolder(), "a file where a folder should be");
    return {};
}

support::Environment withoutHome(const support::UserHome& /*home*/) {
    return {{"XDG_CONFIG_HOME", "/proc/no-such-home"}};
}

/// A store that is longer already than a file may get.
support::Environment withLongStore(const support::UserHome& home) {
    home.plantDefaults(R"({"long":")" + std::string(5000, 'x') + R"("})");
    return {};
}

/// Starts the application so that a file cannot grow, as on a full disk.
std::string onFullDisk(const support::UserHome& home) {
    const auto script = home.path() / "on-full-disk";
    support::writeFile(
        script, std::string("#!/bin/sh\ntrap '' XFSZ\nulimit -f 4\nexec '") + program + "'\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    return script;
}

class UnwritableStoreTest : public testing::TestWithParam<Trouble> {
protected:
    UnwritableStoreTest() {
        EXPECT_TRUE(session.says(unwritable)) << session.window();
        session.act("Refresh displays");
        EXPECT_TRUE(session.says("Found 3 displays")) << session.window();
    }

    void switchOff(const std::string& name) const {
        ASSERT_TRUE(session.act(name + " power"));
        ASSERT_TRUE(session.says(name + " is off"));
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
    Session session{desktop, home, GetParam().prepare(home), GetParam().executable(home)};
};

TEST_P(UnwritableStoreTest, QuittingSwitchesEverythingOn) {
    const std::vector<Monitor> before = desktop.monitors();
    switchOff("External Display 2");
    switchOff("External Display 3");

    session.application().process().signal(SIGTERM);

    EXPECT_TRUE(session.exitsWith(0));
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_P(UnwritableStoreTest, DisplaysThatAnotherProgramSwitchesOffComeBack) {
    desktop.otherClient().switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});

    EXPECT_TRUE(waitUntil([&] { return desktop.monitorsOn() == 3; }));
    EXPECT_TRUE(session.says("Lost display recovered automatically")) << session.window();
}

TEST_P(UnwritableStoreTest, TheErrorLineSaysSoOnce) {
    // The store is written at each of these, and refuses each time.
    for (int round = 0; round < 3; ++round) {
        switchOff("External Display 2");
        ASSERT_TRUE(session.act("External Display 2 power"));
        ASSERT_TRUE(session.says("External Display 2 is on")) << session.window();
    }
    EXPECT_EQ(session.application().standardError(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Troubles, UnwritableStoreTest,
    testing::Values(Trouble{"FileInPlaceOfTheFolder", withFileInPlaceOfTheFolder},
                    Trouble{"MissingHome", withoutHome},
                    Trouble{"FullDisk", withLongStore, onFullDisk}),
    [](const testing::TestParamInfo<Trouble>& each) { return each.param.name; });

class HeldStoreTest : public testing::Test {
protected:
    HeldStoreTest() { EXPECT_TRUE(session.says("Found 3 displays")); }

    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
    Session session{desktop, home};
};

TEST_F(HeldStoreTest, ALockThatIsNeverFreedHoldsNoSwitchAndNoQuitUp) {
    const std::vector<Monitor> before = desktop.monitors();
    const FileDescriptor held =
        AtomicFile::lock(home.defaultsFile().string() + ".lock", std::chrono::seconds(30));
    ASSERT_TRUE(held.isOpen());

    session.act("External Display 2 power");
    ASSERT_TRUE(session.says("External Display 2 is off")) << session.window();
    session.act("Refresh displays");
    ASSERT_TRUE(session.says("Found 3 displays")) << session.window();
    session.application().process().signal(SIGTERM);

    EXPECT_TRUE(session.exitsWith(0));
    EXPECT_EQ(desktop.monitors(), before);
}

}  // namespace
}  // namespace tavrel::e2e
