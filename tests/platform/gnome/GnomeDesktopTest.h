#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/gnome/GnomeReconfigurationReports.h"
#include "platform/gnome/GnomeWindowServer.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/GnomeDesktop.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {

/// A real mutter of its own for each test; skipped where there is none.
class GnomeDesktopTest : public testing::Test {
protected:
    static constexpr const char* left = "Meta-0";
    static constexpr const char* middle = "Meta-1";
    static constexpr const char* right = "Meta-2";

    void SetUp() override {
        if (!support::GnomeDesktop::isInstalled()) {
            GTEST_SKIP() << "mutter is not installed";
        }
        desktop = std::make_unique<support::GnomeDesktop>(hasLid);
        server = std::make_unique<GnomeWindowServer>(store, options());
        atFirst = desktop->screens();
        ASSERT_EQ(atFirst.size(), 3U);
    }

    GnomeOptions options() const { return {.busAddress = desktop->busAddress()}; }

    /// Its number, by the place in mutter's list.
    DisplayID idOf(const std::string& connector) {
        const auto all = server->now()->allDisplays().value();
        for (std::size_t i = 0; i < atFirst.size(); ++i) {
            if (atFirst[i].connector == connector) {
                return all.at(i);
            }
        }
        return 0;
    }
    ServerStatus off(const std::string& connector) {
        return server->setDisplayEnabled(idOf(connector), false);
    }
    ServerStatus on(const std::string& connector) {
        return server->setDisplayEnabled(idOf(connector), true);
    }
    bool isOn(const std::string& connector) const { return desktop->screen(connector).isOn; }

    bool hasLid = false;
    std::unique_ptr<support::GnomeDesktop> desktop;
    SimulatedUserDefaults store;
    std::unique_ptr<GnomeWindowServer> server;
    std::vector<support::GnomeDesktop::Screen> atFirst;
};

}  // namespace tavrel
