#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "tests/e2e/Session.h"
#include "tests/support/LidService.h"
#include "tests/support/MessageBus.h"
#include "tests/support/SilentSocket.h"

namespace tavrel::e2e {
namespace {

using support::LidService;

/// A laptop: DUMMY0 is its panel.
class LidTest : public testing::Test {
protected:
    void startBus() { bus.emplace(home.path(), "system", home.janitor()); }

    void start() {
        const char* options = std::getenv("ASAN_OPTIONS");
        const std::string inherited = options != nullptr ? std::string(options) + ":" : "";
        session.emplace(
            desktop, home,
            support::Environment{
                {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (home.path() / "system").string()},
                {"LD_PRELOAD", LAPTOP_PANEL},
                // Else it insists on being loaded first itself.
                {"ASAN_OPTIONS", inherited + "verify_asan_link_order=0"}});
        ASSERT_TRUE(session->says("Both displays are ready"));
        ASSERT_EQ(session->window().rows.size(), 2U);
        ASSERT_EQ(session->element("MacBook Display power").role, "check box");
    }

    bool isChecked(const std::string& control) const {
        return session->element(control).isChecked();
    }

    support::VirtualDesktop desktop{{.monitors = 2, .accessibility = true}};
    support::UserHome home;
    std::optional<support::MessageBus> bus;
    std::optional<Session> session;
};

TEST_F(LidTest, ClosingTheLidBringsBackTheScreenThatWasOffAndKeepsItOn) {
    startBus();
    LidService service(bus->address(), LidService::Kind::upower, false);
    start();
    session->act("External Display power");
    ASSERT_TRUE(session->says("External Display is off"));
    ASSERT_FALSE(desktop.monitor("DUMMY1").on);

    service.setClosed(true);

    EXPECT_TRUE(session->says("Lost display recovered automatically"));
    EXPECT_TRUE(desktop.monitor("DUMMY1").on);
    EXPECT_FALSE(isChecked("MacBook Display power"));
    EXPECT_TRUE(isChecked("External Display power"));
    EXPECT_FALSE(session->element("External Display power").isEnabled())
        << "the last screen that anybody can see";
}

TEST_F(LidTest, ASystemBusThatHangsDelaysNeitherStartNorEnd) {
    const support::SilentSocket hanging(home.path() / "system");

    start();
    session->act("External Display power");
    EXPECT_TRUE(session->says("External Display is off"));

    session->application().process().signal(SIGTERM);
    EXPECT_TRUE(session->exitsWith(0));
    EXPECT_EQ(desktop.monitorsOn(), 2);
}

}  // namespace
}  // namespace tavrel::e2e
