#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/e2e/Session.h"
#include "tests/support/Keyboard.h"

namespace tavrel::e2e {
namespace {

using support::Monitor;
using support::waitUntil;
namespace key = support::key;

/// The application and its watchdog while the file system under their store hangs.
class HangingStoreTest : public testing::Test {
protected:
    HangingStoreTest() { EXPECT_TRUE(session.says("Found 3 displays")); }
    /// Otherwise a thread of theirs would hang in it while they end.
    ~HangingStoreTest() override { std::filesystem::remove(mark); }

    void letTheFileSystemHang() const {
        support::writeFile(mark, "");
        ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(mark.string() + "-seen"); }));
    }

    void switchOff(const std::string& name) const {
        ASSERT_TRUE(session.act(name + " power"));
        ASSERT_TRUE(session.says(name + " is off")) << session.window();
    }

    support::Environment environment() const {
        const char* sanitizer = std::getenv("ASAN_OPTIONS");
        return {{"LD_PRELOAD", HANGING_FILES},
                {"HANGING_FOLDER", home.configFolder().string()},
                {"HANGING_WHILE", mark.string()},
                // It wants to be loaded before all others.
                {"ASAN_OPTIONS", (sanitizer == nullptr ? "" : sanitizer + std::string(":")) +
                                     "verify_asan_link_order=0"}};
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    const std::vector<Monitor> before = desktop.monitors();
    support::UserHome home;
    const std::filesystem::path mark = home.path() / "hangs";
    Session session{desktop, home, environment()};
};

TEST_F(HangingStoreTest, DisplaysThatAnotherProgramSwitchesOffComeBack) {
    letTheFileSystemHang();

    for (int round = 0; round < 2; ++round) {
        desktop.otherClient().switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});
        ASSERT_TRUE(waitUntil([&] { return desktop.monitorsOn() == 3; })) << round;
        ASSERT_TRUE(session.says("Lost display recovered automatically")) << session.window();
    }
}

TEST_F(HangingStoreTest, TheHotKeyWakesAll) {
    switchOff("External Display 2");
    letTheFileSystemHang();

    support::Keyboard(desktop.displayName()).chord({key::control, key::alt, key::super, 'w'});

    EXPECT_TRUE(session.says("Both displays are on")) << session.window();
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(HangingStoreTest, TheWindowSwitchesOffAndQuittingSwitchesOn) {
    letTheFileSystemHang();
    switchOff("External Display 2");
    switchOff("External Display 3");

    session.application().process().signal(SIGTERM);

    EXPECT_TRUE(session.exitsWith(0));
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(HangingStoreTest, WhatHappenedMeanwhileIsStoredWhenItGoesOn) {
    letTheFileSystemHang();
    switchOff("External Display 2");

    std::filesystem::remove(mark);

    EXPECT_TRUE(waitUntil([&] {
        return support::readFile(home.defaultsFile()).find("TavrelRememberedOutputs") !=
               std::string::npos;
    }));
}

}  // namespace
}  // namespace tavrel::e2e
