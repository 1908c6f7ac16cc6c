#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "tests/e2e/PlayedCompositor.h"
#include "tests/scenario/AccessibleReading.h"
#include "tests/support/AccessibilityBus.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppProcess.h"
#include "tests/support/MessageBus.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/WaitUntil.h"

/// The built application at compositors that a test plays, because no real one without hardware
/// has a monitor plugged in at another port, or answers with errors, on demand. Its window is on an
/// X server, where it is read and used over AT-SPI; that server's own monitor it leaves alone.
namespace tavrel::e2e {
namespace {

using scenario::Display;
using support::waitUntil;

enum class Kind { gnome, plasma };

void PrintTo(Kind kind, std::ostream* out) {
    *out << (kind == Kind::gnome ? "GNOME" : "Plasma");
}

class HotPlugTest : public testing::TestWithParam<Kind> {
protected:
    HotPlugTest() {
        if (GetParam() == Kind::gnome) {
            compositor = std::make_unique<PlayedGnome>(bus.address());
        } else {
            compositor = std::make_unique<PlayedPlasma>();
        }
        support::Environment environment = compositor->environment();
        environment["XDG_SESSION_TYPE"] = "wayland";
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        environment["QT_QPA_PLATFORM"] = "xcb";
        environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1";
        application.emplace(
            aside, home,
            support::AppProcess::Options{.program = TAVREL_PROGRAM, .environment = environment});
        accessible.emplace(accessibility.accessibilityAddress(), application->pid());
    }

    void SetUp() override {
        ASSERT_TRUE(waitUntil([&] { return footer() == "Found 3 displays"; }))
            << application->standardError();
    }

    static support::VirtualDesktop::Options oneMonitor() {
        support::VirtualDesktop::Options options;
        options.monitors = 1;
        return options;
    }
    scenario::Window window() { return scenario::readWindow(accessible->elements()); }
    std::string footer() { return window().footer; }
    bool shows(Display display, bool on) {
        const auto rows = window().rows;
        return rows.size() == 3 && !rows[display].isBusy && rows[display].isOn == on;
    }
    void flip(Display display) {
        accessible->actOn([&] { return scenario::findSwitch(accessible->elements(), display); });
    }
    PlayedCompositor::Shown monitorAt(const std::string& connector) {
        for (const PlayedCompositor::Shown& each : compositor->monitors()) {
            if (each.connector == connector) {
                return each;
            }
        }
        return {};
    }
    std::size_t countOn() {
        const auto all = compositor->monitors();
        return static_cast<std::size_t>(
            std::count_if(all.begin(), all.end(), [](const auto& each) { return each.isOn; }));
    }
    /// The monitor of that row, which is switched off to find it; std::nullopt when it isn't.
    std::optional<PlayedCompositor::Shown> switchedOff(Display display) {
        const auto before = compositor->monitors();
        flip(display);
        if (waitUntil([&] { return shows(display, false) && countOn() + 1 == before.size(); })) {
            for (const PlayedCompositor::Shown& each : before) {
                if (!monitorAt(each.connector).isOn) {
                    return each;
                }
            }
        }
        return std::nullopt;
    }

    support::VirtualDesktop aside{oneMonitor()};
    support::UserHome home;
    support::MessageBus bus{home.path(), "bus", home.janitor()};
    support::AccessibilityBus accessibility{home.path(), aside.displayName(), bus.address(),
                                            home.janitor()};
    std::unique_ptr<PlayedCompositor> compositor;
    std::optional<support::AppProcess> application;
    std::optional<support::AccessibleWindow> accessible;
};

TEST_P(HotPlugTest, AMonitorThatIsOffKeepsItsRowAndItsPlaceAtAnotherPort) {
    const auto monitor = switchedOff(1);
    ASSERT_TRUE(monitor.has_value());

    compositor->unplug(monitor->connector);
    compositor->plugAgain("HDMI-1");
    flip(1);

    EXPECT_TRUE(waitUntil([&] { return monitorAt("HDMI-1").isOn && shows(1, true); }));
    EXPECT_EQ(monitorAt("HDMI-1").x, monitor->x);
    EXPECT_EQ(countOn(), 3U);
}

TEST_P(HotPlugTest, WhatIsOffComesOnWhenAllOthersAreUnplugged) {
    const auto monitor = switchedOff(1);
    ASSERT_TRUE(monitor.has_value());

    for (const PlayedCompositor::Shown& each : compositor->monitors()) {
        if (each.connector != monitor->connector) {
            compositor->unplug(each.connector);
        }
    }

    EXPECT_TRUE(waitUntil([&] { return monitorAt(monitor->connector).isOn; }));
    EXPECT_TRUE(waitUntil([&] { return shows(1, true); }));
}

TEST_P(HotPlugTest, AnErrorIsToldAndAllStaysAsItWas) {
    compositor->failNext();
    flip(1);

    EXPECT_TRUE(waitUntil([&] {
        return footer().starts_with("The desktop couldn’t change") && shows(1, true);
    })) << footer();
    EXPECT_EQ(countOn(), 3U);
    EXPECT_TRUE(switchedOff(1).has_value()) << "the next time it works";
}

INSTANTIATE_TEST_SUITE_P(At, HotPlugTest, testing::Values(Kind::gnome, Kind::plasma),
                         [](const auto& each) {
                             return each.param == Kind::gnome ? "Gnome" : "Plasma";
                         });

}  // namespace
}  // namespace tavrel::e2e
