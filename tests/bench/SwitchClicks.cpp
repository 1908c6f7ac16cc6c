#include "tests/bench/SwitchClicks.h"

#include <array>
#include <optional>
#include <stdexcept>

#include "platform/layout/Identity.h"
#include "tests/scenario/AccessibleReading.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel::bench {

namespace {

using support::waitUntil;

/// Rows are in the order of the displays' numbers.
scenario::Display rowOf(const std::string& output) {
    const auto numberOf = [](const std::string& name) {
        return layout::stableHash(name + "/0/0/0");
    };
    scenario::Display row = 0;
    for (const std::string each : {"DUMMY0", "DUMMY1", "DUMMY2"}) {
        row += numberOf(each) < numberOf(output) ? 1U : 0U;
    }
    return row;
}

support::Bounds switchInWindow() {
    const support::VirtualDesktop desktop({.accessibility = true});
    const support::UserHome home;
    const support::AppProcess application(desktop, home, {.program = TAVREL_PROGRAM});
    const support::AccessibleWindow window(desktop.accessibilityBusAddress(), application.pid());
    std::optional<support::AccessibleElement> found;
    std::optional<support::AppWindow> topLevel;
    const bool isThere = waitUntil([&] {
        found = scenario::findSwitch(window.elements(), rowOf(switchedOutput));
        topLevel = support::AppWindow::find(desktop.displayName(), application.pid());
        return found && topLevel;
    });
    if (!isThere) {
        throw std::runtime_error("the window shows no switch of " + std::string(switchedOutput));
    }
    support::Bounds place = window.boundsOf(*found);
    place.x -= topLevel->bounds().x;
    place.y -= topLevel->bounds().y;
    return place;
}

}  // namespace

SwitchClicks::SwitchClicks(const Desk& desk, RunningApplication& application)
    : desk_(desk),
      application_(application),
      place_(switchInWindow()),
      pointer_(desk.displayName()) {}

void SwitchClicks::press() {
    // After the last click the window still paints its change, and reads the layout again.
    application_.watch.awaitRest(std::chrono::milliseconds(500));
    const support::Bounds window =
        support::AppWindow::find(desk_.displayName(), application_.process->pid()).value().bounds();
    pointer_.moveTo(window.x + place_.centreX(), window.y + place_.centreY());
    // It shows that the pointer is there, and then that the button is down, as long before the
    // button goes up as it does under a hand.
    application_.watch.awaitRest(std::chrono::milliseconds(200));
    pointer_.press();
    application_.watch.awaitRest(std::chrono::milliseconds(100));
}

}  // namespace tavrel::bench
