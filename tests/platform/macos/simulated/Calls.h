#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// The calls that this process makes to the simulated system, as text. Questions about one
/// display, and the handling of strings and data, are left out.
namespace tavrel::simulatedMac {

struct Calls {
    std::mutex mutex;
    std::vector<std::string> noted;

    static Calls& ofThisProcess() {
        static Calls calls;
        return calls;
    }
};

/// From any thread.
inline void note(std::string call) {
    const std::lock_guard lock(Calls::ofThisProcess().mutex);
    Calls::ofThisProcess().noted.push_back(std::move(call));
}

/// The calls since it was last asked.
inline std::vector<std::string> takeCalls() {
    const std::lock_guard lock(Calls::ofThisProcess().mutex);
    return std::exchange(Calls::ofThisProcess().noted, {});
}

}  // namespace tavrel::simulatedMac
