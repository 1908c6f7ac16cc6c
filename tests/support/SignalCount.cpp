#include "tests/support/SignalCount.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace tavrel::support {

namespace {

/// How long the thread may not notice that it is to end.
constexpr std::uint64_t turnMicroseconds = 5'000;

struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};

void check(int result) {
    if (result < 0) {
        throw std::runtime_error("no signals can be counted");
    }
}

int countOne(sd_bus_message* /*message*/, void* count, sd_bus_error* /*error*/) {
    ++*static_cast<std::atomic<int>*>(count);
    return 0;
}

}  // namespace

struct SignalCount::Listener {
    Listener(const std::string& busAddress, const std::string& match) {
        sd_bus* opened = nullptr;
        check(sd_bus_new(&opened));
        bus.reset(opened);
        check(sd_bus_set_address(opened, busAddress.c_str()));
        check(sd_bus_set_bus_client(opened, 1));
        check(sd_bus_start(opened));
        check(sd_bus_add_match(opened, nullptr, match.c_str(), &countOne, &count));
        thread = std::thread([this] { listen(); });
    }

    ~Listener() {
        isEnding = true;
        thread.join();
    }

    void listen() {
        while (!isEnding) {
            if (sd_bus_process(bus.get(), nullptr) == 0) {
                sd_bus_wait(bus.get(), turnMicroseconds);
            }
        }
    }

    std::atomic<int> count = 0;
    std::atomic<bool> isEnding = false;
    std::unique_ptr<sd_bus, CloseBus> bus;
    std::thread thread;
};

SignalCount::SignalCount(const std::string& busAddress, const std::string& interface,
                         const std::string& member)
    : listener_(std::make_unique<Listener>(
          busAddress, "type='signal',interface='" + interface + "',member='" + member + "'")) {}

SignalCount::~SignalCount() = default;

int SignalCount::count() const {
    return listener_->count;
}

}  // namespace tavrel::support
