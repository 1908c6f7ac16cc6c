#include "tests/platform/macos/simulated/Calls.h"

#include <mutex>
#include <utility>

namespace tavrel::simulatedMac {

namespace {

struct Log {
    std::mutex mutex;
    std::vector<std::string> calls;
};

Log& log() {
    static Log log;
    return log;
}

}  // namespace

void note(std::string call) {
    const std::lock_guard lock(log().mutex);
    log().calls.push_back(std::move(call));
}

std::vector<std::string> takeCalls() {
    const std::lock_guard lock(log().mutex);
    return std::exchange(log().calls, {});
}

}  // namespace tavrel::simulatedMac
