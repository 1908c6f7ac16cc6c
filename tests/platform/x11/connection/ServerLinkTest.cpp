#include "platform/x11/connection/ServerLink.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "tests/platform/x11/connection/LoopbackListener.h"

namespace tavrel::x11 {
namespace {

using std::chrono::steady_clock;

/// Where a server would be, something that hangs up on everyone and counts the calls.
class RudeListener {
public:
    RudeListener() : thread_([this] { hangUpOnEveryone(); }) {}
    ~RudeListener() {
        stop_ = true;
        thread_.join();
    }
    RudeListener(const RudeListener&) = delete;
    RudeListener& operator=(const RudeListener&) = delete;

    const std::string& displayName() const { return listener_.displayName(); }
    int calls() const { return calls_; }

private:
    void hangUpOnEveryone() {
        while (!stop_) {
            pollfd ready{listener_.number(), POLLIN, 0};
            if (::poll(&ready, 1, 10) == 1) {
                ::close(::accept(listener_.number(), nullptr, nullptr));
                ++calls_;
            }
        }
    }

    LoopbackListener listener_;
    std::atomic<int> calls_ = 0;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

TEST(ServerLinkTest, LooksForAServerAtMostOnceASecond) {
    const RudeListener listener;
    ServerLink link({.displayName = listener.displayName()});
    const auto begin = steady_clock::now();
    while (steady_clock::now() - begin < std::chrono::milliseconds(2500)) {
        EXPECT_EQ(link.connection(), nullptr);
        std::this_thread::yield();
    }
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(steady_clock::now() - begin).count();
    EXPECT_LE(listener.calls(), seconds + 1);
    EXPECT_GE(listener.calls(), 2) << "it does look again";
    EXPECT_EQ(link.connectionsMade(), 0U);
}

}  // namespace
}  // namespace tavrel::x11
