#include "tests/support/WaitUntil.h"

#include <thread>

namespace tavrel::support {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds bound) {
    const auto giveUp = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= giveUp) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace tavrel::support
