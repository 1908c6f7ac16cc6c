#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/CoreFoundation.h"
#include "tests/platform/macos/simulated/Desk.h"

namespace tavrel {

/// A new simulated Mac with a panel and two monitors, all on. Expects at the end that every
/// Core Foundation object has been released.
class MacFixture : public testing::Test {
protected:
    static constexpr DisplayID panel = 1;
    static constexpr DisplayID monitor = 2;
    static constexpr DisplayID other = 3;

    MacFixture() {
        reset(mac);
        connect(mac, {.id = panel, .builtIn = true});
        connect(mac, {.id = monitor});
        connect(mac, {.id = other});
        simulatedMac::takeCalls();
    }

    ~MacFixture() override { EXPECT_EQ(simulatedMac::livingObjects(), 0U); }

    void refuse(simulatedMac::Refusal which, std::int32_t status) {
        mac.with([&](simulatedMac::State& state) { state.refusals.*which = status; });
    }

    simulatedMac::SharedState& mac = simulatedMac::SharedState::ofThisProcess();
};

}  // namespace tavrel
