#include "tests/support/SignalCount.h"

#include <atomic>

#include "tests/support/BusService.h"

namespace tavrel::support {

namespace {

int countOne(sd_bus_message* /*message*/, void* count, sd_bus_error* /*error*/) {
    ++*static_cast<std::atomic<int>*>(count);
    return 0;
}

}  // namespace

struct SignalCount::Listener {
    Listener(const std::string& busAddress, const std::string& match) : service(busAddress) {
        service.hear(match, &countOne, &count);
        service.start();
    }

    std::atomic<int> count = 0;
    /// Last, so that its thread ends first.
    BusService service;
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
