#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>

#include "tests/e2e/Session.h"

namespace tavrel::e2e {
namespace {

using support::AppProcess;
using support::ChildProcess;
using support::UserHome;
using support::VirtualDesktop;
using support::waitUntil;

/// A registry as the application stores it, of displays last seen just now.
std::string storeWith(const std::string& identifier) {
    using namespace std::chrono;
    const auto reference = sys_days{year{2001} / January / 1};
    const auto now = duration_cast<seconds>(system_clock::now() - reference).count();
    return R"({"TavrelKnownDisplays":"[{\"id\":)" + identifier +
           R"(,\"isBuiltIn\":false,\"lastSeenAt\":)" + std::to_string(now) + R"(}]"})";
}

/// The application says one line about its failure and exits with 1.
void expectOneLineAndExitOne(const AppProcess& application) {
    EXPECT_EQ(application.process().waitForEnd(), (ChildProcess::Ending{1, std::nullopt}));
    const std::string said = application.standardError();
    EXPECT_THAT(said, testing::EndsWith("\n"));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_GT(said.size(), 20U) << said;
    EXPECT_EQ(application.standardOutput(), "");
}

TEST(BadEnvironmentTest, WithoutAnXServerItSaysSoInOneLineAndExitsWithOne) {
    const UserHome home;
    const AppProcess application(home, {.program = program, .environment = {{"DISPLAY", ":4242"}}});

    expectOneLineAndExitOne(application);
}

TEST(BadEnvironmentTest, WithoutADisplayVariableItSaysSoInOneLineAndExitsWithOne) {
    const UserHome home;
    const AppProcess application(home, {.program = program});

    expectOneLineAndExitOne(application);
}

TEST(BadEnvironmentTest, WithoutRandRItOpensAndListsNothing) {
    const VirtualDesktop desktop({.randr = false, .accessibility = true});
    const UserHome home;
    const Session session(desktop, home);

    EXPECT_EQ(session.element("Your screens").role, "label");
    EXPECT_TRUE(waitUntil([&] {
        const auto refresh = session.accessible().find("Refresh displays");
        return refresh && refresh->isEnabled();
    }));
    EXPECT_THAT(session.window().rows, testing::IsEmpty());
    EXPECT_FALSE(session.element("Wake both displays").isEnabled());
}

TEST(BadEnvironmentTest, WithoutRandRASwitchOfARememberedDisplaySaysWhyItCannot) {
    const VirtualDesktop desktop({.randr = false, .accessibility = true});
    const UserHome home;
    home.plantDefaults(storeWith("7"));
    const Session session(desktop, home);
    const auto control = session.element("External Display power");
    ASSERT_TRUE(control.isEnabled());
    ASSERT_FALSE(control.isChecked());

    // With nothing usable the next restoration, a second later, has its own say.
    EXPECT_TRUE(waitUntil([&] {
        session.accessible().act(session.element("External Display power"));
        return session.window().footer ==
               "This desktop session doesn’t expose display enable/disable control";
    })) << session.window();
    EXPECT_FALSE(session.element("External Display power").isChecked());
}

class CorruptStoreTest : public testing::TestWithParam<const char*> {};

TEST_P(CorruptStoreTest, CountsAsAnEmptyRegistry) {
    const VirtualDesktop desktop({.monitors = 2, .accessibility = true});
    const UserHome home;
    home.plantDefaults(GetParam());
    const Session session(desktop, home);

    EXPECT_TRUE(session.says("Both displays are ready")) << session.window();
    EXPECT_EQ(session.window().rows.size(), 2U);
    EXPECT_TRUE(waitUntil([&] {
        const std::string stored = support::readFile(home.defaultsFile());
        return stored.find("isBuiltIn") != std::string::npos &&
               stored.find("lastSeenAt") != std::string::npos;
    }));
}

INSTANTIATE_TEST_SUITE_P(
    Contents, CorruptStoreTest,
    testing::Values("", "not JSON at all", "[1,2,3]", "{\"TavrelKnownDisplays\":[]}",
                    "{\"TavrelKnownDisplays\":\"[{\\\"id\\\":4294967296,\\\"isBuiltIn\\\":false,"
                    "\\\"lastSeenAt\\\":1}]\"}",
                    "{\"TavrelKnownDisplays\":\"[{\\\"id\\\":5}]\"}",
                    "{\"TavrelKnownDisplays\":\"[{\\\"id\\\":5,\\\"isBuiltIn\\\":false,"
                    "\\\"lastSeenAt\\\":1e999}]\"}"));

TEST(BadEnvironmentTest, WhoeverListensToItMayGoAway) {
    const VirtualDesktop desktop({.accessibility = true});
    const UserHome home;
    Session session(desktop, home);
    ASSERT_TRUE(session.says("Found 3 displays"));

    session.application().process().signal(SIGPIPE);

    session.act("Quit");
    EXPECT_TRUE(session.exitsWith(0));
}

TEST(BadEnvironmentTest, AServerThatGoesAwayEndsTheApplicationWithoutACrash) {
    VirtualDesktop desktop({.accessibility = true});
    const UserHome home;
    Session session(desktop, home);
    ASSERT_TRUE(session.says("Found 3 displays"));

    desktop.kill();

    const auto ending = session.application().process().waitForEnd();
    ASSERT_TRUE(ending);
    EXPECT_EQ(ending->signal, std::nullopt) << *ending;
}

}  // namespace
}  // namespace tavrel::e2e
