#include "platform/x11/connection/ServerLink.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::x11 {
namespace {

using std::chrono::steady_clock;

/// Where a server would be, something that hangs up on everyone and counts the calls.
class RudeListener {
public:
    RudeListener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket_.number(), generic, size) != 0 || ::listen(socket_.number(), 16) != 0 ||
            ::getsockname(socket_.number(), generic, &size) != 0) {
            throw std::system_error(errno, std::generic_category(), "listening");
        }
        constexpr int firstDisplaysPort = 6000;
        displayName_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - firstDisplaysPort);
        thread_ = std::thread([this] { hangUpOnEveryone(); });
    }
    ~RudeListener() {
        stop_ = true;
        thread_.join();
    }
    RudeListener(const RudeListener&) = delete;
    RudeListener& operator=(const RudeListener&) = delete;

    const std::string& displayName() const { return displayName_; }
    int calls() const { return calls_; }

private:
    void hangUpOnEveryone() {
        while (!stop_) {
            pollfd ready{socket_.number(), POLLIN, 0};
            if (::poll(&ready, 1, 10) == 1) {
                ::close(::accept(socket_.number(), nullptr, nullptr));
                ++calls_;
            }
        }
    }

    FileDescriptor socket_;
    std::string displayName_;
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
