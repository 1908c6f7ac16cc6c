#include <QApplication>
#include <optional>

#include <gmock/gmock.h>

#include "tests/support/VirtualDesktop.h"
#include "ui/paint/Theme.h"

/// Runs tests of widgets on a virtual desktop of their own, with assistive technology
/// switched on.
int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    std::optional<tavrel::support::VirtualDesktop> desktop;
    std::optional<QApplication> application;
    if (!testing::GTEST_FLAG(list_tests)) {
        desktop.emplace(
            tavrel::support::VirtualDesktop::Options{.monitors = 1, .accessibility = true});
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("DISPLAY", desktop->displayName().c_str());
        qputenv("DBUS_SESSION_BUS_ADDRESS", desktop->sessionBusAddress().c_str());
        qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        application.emplace(argc, argv);
        tavrel::theme::apply();
    }
    return RUN_ALL_TESTS();
}
