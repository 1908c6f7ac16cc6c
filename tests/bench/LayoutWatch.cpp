#include "tests/bench/LayoutWatch.h"

#include <poll.h>

#include <stdexcept>

namespace tavrel::bench {

namespace {

constexpr int timeoutMilliseconds = 20'000;

}  // namespace

void LayoutWatch::forget() {
    switches_.roundTrip();
    while (switches_.next()) {
    }
}

Time LayoutWatch::awaitSwitch(bool on) {
    for (;;) {
        while (const auto isOn = switches_.next()) {
            if (*isOn == on) {
                return Clock::now();
            }
        }
        pollfd ready{switches_.descriptor(), POLLIN, 0};
        if (::poll(&ready, 1, timeoutMilliseconds) <= 0) {
            throw std::runtime_error(on ? "no monitor is switched on" : "none is switched off");
        }
    }
}

}  // namespace tavrel::bench
