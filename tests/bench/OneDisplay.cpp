#include "tests/bench/OneDisplay.h"

#include <stdexcept>
#include <thread>

#include "tests/bench/Clock.h"
#include "tests/platform/DisplayAt.h"

namespace tavrel::bench {

OneDisplay::OneDisplay(DisplaySwitch& displaySwitch, DisplayQueries& queries,
                       const std::string& connector)
    : switch_(displaySwitch), queries_(queries), display_(displayAt(queries, connector)) {
    if (display_ == 0) {
        throw std::runtime_error("there is no " + connector);
    }
}

void OneDisplay::set(bool on) const {
    if (switch_.setDisplayEnabled(display_, on) != serverStatus::success) {
        throw std::runtime_error("the compositor refuses to switch a display");
    }
}

double OneDisplay::timed(bool on, const std::function<void()>& act) const {
    constexpr std::chrono::seconds timeout{20};
    constexpr std::chrono::microseconds pause{100};
    if (isOn() == on) {
        throw std::runtime_error("the display is so before it is switched");
    }
    const Time begin = Clock::now();
    act();
    while (isOn() != on) {
        if (Clock::now() > begin + timeout) {
            throw std::runtime_error("the display is not switched");
        }
        std::this_thread::sleep_for(pause);
    }
    return milliseconds(Clock::now() - begin);
}

}  // namespace tavrel::bench
