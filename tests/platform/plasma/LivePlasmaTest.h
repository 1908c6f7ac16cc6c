#pragma once

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/plasma/PlasmaLayoutServer.h"
#include "platform/plasma/PlasmaWindowServer.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/PlasmaDesktop.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {

/// A window server of ours at a real Plasma compositor with three outputs side by side, and
/// another program at the same compositor.
class LivePlasmaTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::PlasmaDesktop::isInstalled()) {
            GTEST_SKIP() << "Plasma's compositor, kwin_wayland, is not installed";
        }
        desktop.emplace();
        options.displayName = desktop->displayName();
        elsewhereLink.emplace(options);
        elsewhere.emplace(*elsewhereLink);
        server.emplace(store, options);
        // On a busy machine it may take longer than the options allow for one answer.
        layout::Layout first;
        ASSERT_TRUE(support::waitUntil([&] { return (first = layout()).outputs.size() == 3; }));
        left = idIn(first, "Virtual-0");
        middle = idIn(first, "Virtual-1");
        right = idIn(first, "Virtual-2");
    }

    layout::Layout layout() { return elsewhere->read().layout.value_or(layout::Layout{}); }

    static DisplayID idIn(const layout::Layout& layout, const std::string& connector) {
        for (const layout::Output& output : layout.outputs) {
            if (output.identity.connector == connector) {
                return output.display;
            }
        }
        throw std::runtime_error("there is no " + connector);
    }

    /// As all is now, with one display changed; by the other program.
    template <typename Change>
    void changeElsewhere(DisplayID display, Change change) {
        layout::WholeLayout whole{.primary = layout().primary.value_or(0)};
        for (const layout::Output& output : layout().outputs) {
            whole.places.push_back({output.display, output.shown});
            if (output.display == display) {
                change(whole.places.back().shown);
            }
        }
        ASSERT_EQ(elsewhere->apply(whole), layout::WholeLayoutServer::Outcome::applied);
    }
    void switchOffElsewhere(DisplayID display) {
        changeElsewhere(display, [](auto& shown) { shown.reset(); });
    }

    bool isActive(DisplayID display) { return server->now()->isActive(display); }

    PlasmaServerOptions options;
    std::optional<support::PlasmaDesktop> desktop;
    std::optional<plasma::ServerLink> elsewhereLink;
    std::optional<plasma::PlasmaLayoutServer> elsewhere;
    SimulatedUserDefaults store;
    std::optional<PlasmaWindowServer> server;
    DisplayID left = 0;
    DisplayID middle = 0;
    DisplayID right = 0;
};

}  // namespace tavrel
