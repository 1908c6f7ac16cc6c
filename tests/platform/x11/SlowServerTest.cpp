#include <gmock/gmock.h>
#include <xcb/randr.h>

#include <atomic>
#include <chrono>
#include <future>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include "platform/x11/connection/Connection.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/ServerProcess.h"
#include "tests/platform/x11/connection/RequestRelay.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using Request = RequestRelay::Request;
using support::Monitor;

constexpr std::uint8_t grabServer = 36;
constexpr std::uint8_t ungrabServer = 37;

/// Another program's question, which is never answered while the server is somebody else's.
std::future<bool> askAsAnotherProgram(const std::string& displayName) {
    return std::async(std::launch::async, [displayName] {
        support::XConnection(displayName).roundTrip();
        return true;
    });
}

bool isAnswered(const std::future<bool>& question) {
    return question.wait_for(support::defaultTimeout) == std::future_status::ready;
}

/// A window server of ours at a real X server that can be held up at a request of its own.
class SlowServerTest : public LiveServerTest {
protected:
    /// The server stops when it is about to get this request of ours, once.
    void stopAt(Request request) {
        awaited = request;
        isArmed = true;
    }
    bool hasStopped() const { return !isArmed; }

    Request randr(std::uint8_t minor) const { return {.opcode = randrOpcode, .minor = minor}; }
    static constexpr std::uint8_t setScreenSize = 7;
    static constexpr std::uint8_t setCrtcConfig = 21;

    std::unique_ptr<X11WindowServer> serverBehindRelay(std::chrono::milliseconds timeout) {
        return std::make_unique<X11WindowServer>(
            store, X11ServerOptions{.displayName = relay.displayName(), .timeout = timeout});
    }

    const DisplayID right = idOf("DUMMY2");
    ServerProcess process{desktop};
    const std::uint8_t randrOpcode = [this] {
        const support::XConnection connection(desktop.displayName());
        return xcb_get_extension_data(connection.get(), &xcb_randr_id)->major_opcode;
    }();
    Request awaited;
    std::atomic<bool> isArmed = false;
    RequestRelay relay{desktop.displayName(), [this](Request request) {
                           if (isArmed && request == awaited) {
                               process.pause();
                               isArmed = false;
                           }
                       }};
};

TEST_F(SlowServerTest, AConnectionThatIsGivenUpLeavesTheServerToEveryoneElse) {
    for (const Request& request : {Request{.opcode = grabServer}, randr(setCrtcConfig),
                                   randr(setScreenSize), Request{.opcode = ungrabServer}}) {
        SCOPED_TRACE(testing::Message()
                     << "request " << int{request.opcode} << ", " << int{request.minor});
        const std::vector<Monitor> before = desktop.monitors();
        auto impatient = serverBehindRelay(std::chrono::seconds(2));
        ASSERT_TRUE(impatient->canSwitch());
        stopAt(request);

        const ServerStatus status = impatient->setDisplayEnabled(right, false);
        ASSERT_TRUE(hasStopped());
        process.resume();
        const auto resumed = std::chrono::steady_clock::now();

        auto question = askAsAnotherProgram(desktop.displayName());
        EXPECT_TRUE(isAnswered(question)) << "while the one who gave up goes on living";
        const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - resumed);
        std::cout << "another program was served after " << waited.count() << " ms\n";
        if (HasFailure()) {
            impatient.reset();
            return;
        }
        // Its last request is a mere courtesy: by then the change has been made and looked at.
        EXPECT_EQ(status, request.opcode == ungrabServer ? serverStatus::success
                                                         : serverStatus::notImplemented);
        EXPECT_TRUE(desktop.monitor("DUMMY0").on);
        EXPECT_TRUE(desktop.monitor("DUMMY1").on);
        ASSERT_TRUE(support::waitUntil(
            [&] { return impatient->setDisplayEnabled(right, true) == serverStatus::success; }));
        EXPECT_EQ(desktop.monitors(), before);
    }
}

TEST_F(SlowServerTest, WhatMayHaveGoneOffAllTheSameComesBackAsItWas) {
    other.setMode("DUMMY2", "1280x1024");
    const std::vector<Monitor> before = desktop.monitors();
    auto impatient = serverBehindRelay(std::chrono::seconds(2));
    ASSERT_TRUE(impatient->canSwitch());
    // By then the CRTC is off, and nobody hears of it any more.
    stopAt(randr(setScreenSize));
    ASSERT_EQ(impatient->setDisplayEnabled(right, false), serverStatus::notImplemented);
    process.resume();
    ASSERT_FALSE(desktop.monitor("DUMMY2").on);

    X11WindowServer nextRun(store, {.displayName = desktop.displayName()});
    EXPECT_EQ(nextRun.setDisplayEnabled(right, true), serverStatus::success);

    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(SlowServerTest, AChangeThatTakesElevenSecondsSucceeds) {
    // As long as Linux waits for one CRTC that is stuck, and with the usual timeout.
    constexpr std::chrono::seconds stuck{11};
    auto patient = serverBehindRelay(X11ServerOptions{}.timeout);
    ASSERT_TRUE(patient->canSwitch());
    stopAt(randr(setCrtcConfig));
    std::thread unstuck([&] {
        EXPECT_TRUE(support::waitUntil([&] { return hasStopped(); }));
        std::this_thread::sleep_for(stuck);
        process.resume();
    });

    const ServerStatus status = patient->setDisplayEnabled(right, false);
    unstuck.join();

    EXPECT_EQ(status, serverStatus::success);
    EXPECT_FALSE(desktop.monitor("DUMMY2").on);
}

}  // namespace
}  // namespace tavrel
