#include "tests/support/WaitUntil.h"

#include <algorithm>
#include <thread>

namespace tavrel::support {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        const auto asked = Clock::now();
        if (condition()) {
            return true;
        }
        const auto now = Clock::now();
        if (now >= deadline) {
            return false;
        }
        // What takes long to ask would otherwise keep a processor from what is waited for.
        std::this_thread::sleep_for(
            std::max<Clock::duration>(std::chrono::milliseconds(5), 3 * (now - asked)));
    }
}

}  // namespace tavrel::support
