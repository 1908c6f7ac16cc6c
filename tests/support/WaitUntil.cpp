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
        // What takes long to ask would otherwise keep a processor from what is waited for. A
        // question that itself waits is no reason to pause for longer.
        std::this_thread::sleep_for(std::clamp<Clock::duration>(
            3 * (now - asked), std::chrono::milliseconds(5), std::chrono::milliseconds(200)));
    }
}

}  // namespace tavrel::support
