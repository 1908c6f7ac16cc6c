#include <gmock/gmock.h>

#include <optional>

#include "tests/e2e/Activation.h"
#include "tests/scenario/PlasmaStage.h"
#include "tests/support/DBus.h"
#include "tests/support/LauncherWindow.h"
#include "tests/support/RealPortal.h"
#include "tests/support/ShortcutsBackend.h"
#include "tests/support/ShortcutsPortal.h"
#include "tests/support/TrayWatcher.h"

/// The application among the others on a Plasma desktop.
namespace tavrel::e2e {
namespace {

using scenario::Display;
using support::waitUntil;

class PlasmaCitizenTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::PlasmaDesktop::isInstalled()) {
            GTEST_SKIP() << "Plasma's compositor, kwin_wayland, is not installed";
        }
        stage.emplace(3, TAVREL_PROGRAM);
    }

    bool shows(const std::string& hint) const {
        return waitUntil([&] { return stage->accessible().find(hint).has_value(); });
    }
    std::string explanation() const {
        const auto button = stage->accessible().find("Wake both displays");
        return button ? stage->accessible().descriptionOf(*button) : "there is no such button";
    }
    bool switchesOff(Display display) const {
        stage->flip(display);
        return waitUntil([&] { return !stage->server().at(display).isOn && !isBusy(); });
    }
    bool isBusy() const {
        for (const auto& row : stage->window().rows) {
            if (row.isBusy) {
                return true;
            }
        }
        return false;
    }
    bool allAreWoken() const {
        return waitUntil([&] {
            return stage->window().footer == "Both displays are on" &&
                   stage->server() == stage->serverAtFirst();
        });
    }

    mutable std::optional<scenario::PlasmaStage> stage;
};

TEST_F(PlasmaCitizenTest, WhoeverIsStartedAgainGetsTheFocusOfItsStarter) {
    const Activation application(*stage);
    ASSERT_TRUE(waitUntil([&] { return application.hasFocus(); }));
    support::LauncherWindow launcher(stage->desktop().displayName());
    ASSERT_TRUE(waitUntil([&] { return !application.hasFocus(); }));

    EXPECT_TRUE(application.startAgain(launcher.newActivationToken()));

    EXPECT_TRUE(waitUntil([&] { return application.hasFocus() && !launcher.isActive(); }));
}

TEST_F(PlasmaCitizenTest, WhoeverIsLaunchedGetsTheFocusOfTheLauncher) {
    const Activation application(*stage);
    ASSERT_TRUE(waitUntil([&] { return application.hasFocus(); }));
    support::LauncherWindow launcher(stage->desktop().displayName());
    ASSERT_TRUE(waitUntil([&] { return !application.hasFocus(); }));

    application.launch(launcher.newActivationToken());

    EXPECT_TRUE(waitUntil([&] { return application.hasFocus() && !launcher.isActive(); }));
}

TEST_F(PlasmaCitizenTest, ItsIconBringsItToTheFrontWithTheFocusOfThePanel) {
    const Activation application(*stage);
    const support::TrayWatcher tray(stage->sessionBusAddress());
    ASSERT_TRUE(waitUntil([&] { return tray.icons().size() == 1; }));
    ASSERT_TRUE(waitUntil([&] { return application.hasFocus(); }));
    support::LauncherWindow panel(stage->desktop().displayName());
    ASSERT_TRUE(waitUntil([&] { return !application.hasFocus(); }));
    const support::DBus bus(stage->sessionBusAddress());
    const auto callIcon = [&](const char* method, GVariant* arguments) {
        bus.call(tray.icons().back(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", method,
                 arguments);
    };

    callIcon("ProvideXdgActivationToken", g_variant_new("(s)", panel.newActivationToken().c_str()));
    callIcon("Activate", g_variant_new("(ii)", 0, 0));

    EXPECT_TRUE(waitUntil([&] { return application.hasFocus() && !panel.isActive(); }));
}

TEST_F(PlasmaCitizenTest, TheHotKeyThatTheUserChoseIsShownAndWakesAllOncePerPress) {
    support::ShortcutsBackend backend(stage->sessionBusAddress());
    const support::RealPortal portal(stage->sessionBusAddress());
    ASSERT_TRUE(shows("Super+F9")) << portal.complaints();
    EXPECT_THAT(backend.bound(), testing::ElementsAre("wake CTRL+ALT+LOGO+w"));
    EXPECT_EQ(explanation(), "");
    ASSERT_TRUE(switchesOff(0));
    ASSERT_TRUE(switchesOff(2));

    backend.press();

    EXPECT_TRUE(allAreWoken());
    ASSERT_TRUE(switchesOff(1));
    backend.rebind("Super+F10");
    EXPECT_TRUE(shows("Super+F10"));
    // A wake would say so before it does anything.
    EXPECT_EQ(stage->window().footer, "External Display 2 is off") << "the press came twice";
}

TEST_F(PlasmaCitizenTest, ANewerPortalIsToldWhoWantsTheHotKey) {
    support::ShortcutsPortal portal(stage->sessionBusAddress());
    ASSERT_TRUE(shows("Ctrl+Alt+Super+W"));
    ASSERT_TRUE(waitUntil([&] { return explanation().empty(); }));
    EXPECT_THAT(portal.asked(),
                testing::ElementsAre("Register " TAVREL_APPLICATION_ID, "CreateSession",
                                     "BindShortcuts wake CTRL+ALT+LOGO+w"));
    ASSERT_TRUE(switchesOff(1));

    portal.press("wake");

    EXPECT_TRUE(allAreWoken());
}

TEST_F(PlasmaCitizenTest, WithoutAPortalACommandIsNamedThatDoesTheSame) {
    ASSERT_TRUE(switchesOff(1));
    const std::string command = "gapplication action " TAVREL_APPLICATION_ID " wake";
    EXPECT_TRUE(waitUntil([&] {
        return explanation() == "This desktop gives Tavrel no hot key. Bind a key to: " + command;
    }));

    support::Environment environment = support::bareEnvironment();
    environment["DBUS_SESSION_BUS_ADDRESS"] = stage->sessionBusAddress();
    support::runToEnd({"sh", "-c", command}, environment);

    EXPECT_TRUE(allAreWoken());
}

}  // namespace
}  // namespace tavrel::e2e
