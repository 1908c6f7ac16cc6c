#include <gtest/gtest.h>
#include <xcb/randr.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>

#include "platform/layout/Identity.h"
#include "tests/platform/x11/ServerProcess.h"
#include "tests/platform/x11/connection/RequestRelay.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/WaitUntil.h"
#include "watchdog/application/WatchdogProcess.h"

/// The watchdog as it is installed, at a real X server that takes too long.
namespace tavrel::watchdog {
namespace {

class WatchdogAtSlowServerTest : public testing::Test {
protected:
    WatchdogAtSlowServerTest() {
        setenv("DISPLAY", relay.displayName().c_str(), 1);
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        watchdog = WatchdogProcess::start(TAVREL_WATCHDOG);
    }

    static std::uint8_t randrOpcodeOf(const support::VirtualDesktop& desktop) {
        const support::XConnection connection(desktop.displayName());
        return xcb_get_extension_data(connection.get(), &xcb_randr_id)->major_opcode;
    }

    support::TemporaryFolder folder;
    support::VirtualDesktop desktop;
    ServerProcess process{desktop};
    const std::uint8_t randrOpcode = randrOpcodeOf(desktop);
    std::atomic<bool> hasStopped = false;
    /// The server stops when it has been grabbed and is about to change a CRTC.
    RequestRelay relay{desktop.displayName(), [this](RequestRelay::Request request) {
                           constexpr std::uint8_t setCrtcConfig = 21;
                           if (request.opcode == randrOpcode && request.minor == setCrtcConfig &&
                               !hasStopped.exchange(true)) {
                               process.pause();
                           }
                       }};
    std::unique_ptr<WatchdogProcess> watchdog;
};

TEST_F(WatchdogAtSlowServerTest, WhatItGivesUpLeavesTheServerToEveryoneElse) {
    constexpr std::chrono::seconds answerTimeout{60};
    const DisplayID display = layout::stableHash("DUMMY1/0/0/0");
    ASSERT_NE(watchdog, nullptr);
    ASSERT_EQ(watchdog->link().receive(answerTimeout),
              Received(Message{.kind = Message::Kind::ready}));

    watchdog->link().send({.kind = Message::Kind::switchOff, .id = 1, .display = display});
    EXPECT_EQ(watchdog->link().receive(answerTimeout),
              Received(Message{
                  .kind = Message::Kind::answer, .id = 1, .status = serverStatus::notImplemented}));
    ASSERT_TRUE(hasStopped);
    process.resume();

    auto question = std::async(std::launch::async, [name = desktop.displayName()] {
        support::XConnection(name).roundTrip();
    });
    EXPECT_EQ(question.wait_for(support::defaultTimeout), std::future_status::ready)
        << "while the watchdog goes on living";
    // So that a server that is still grabbed is free in the end.
    watchdog->kill();
}

}  // namespace
}  // namespace tavrel::watchdog
