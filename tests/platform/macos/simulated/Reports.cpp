#include "tests/platform/macos/simulated/Reports.h"

#include <CoreGraphics/CoreGraphics.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <utility>

#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/Desk.h"

namespace tavrel::simulatedMac {

namespace {

using Callback = std::pair<CGDisplayReconfigurationCallBack, void*>;

struct Callbacks {
    std::mutex mutex;
    std::vector<Callback> all;
    /// How many of all reports this process has been given.
    std::uint64_t delivered = 0;
};

Callbacks& callbacks() {
    static Callbacks callbacks;
    return callbacks;
}

}  // namespace

void report(const std::vector<Report>& reports) {
    // Nothing is promised to one who removes a callback while it is being called.
    std::vector<Callback> all;
    {
        const std::lock_guard lock(callbacks().mutex);
        all = callbacks().all;
    }
    for (const Report& each : reports) {
        for (const auto& [callback, userInfo] : all) {
            callback(each.display, each.flags, userInfo);
        }
    }
}

void deliverReportsOfOthers() {
    const std::vector<Report> fresh = SharedState::ofThisProcess().with([](State& state) {
        const std::uint64_t size = state.reports.size();
        const std::uint64_t oldest = state.reportCount > size ? state.reportCount - size : 0;
        std::vector<Report> result;
        std::uint64_t& next = callbacks().delivered;
        for (next = std::max(next, oldest); next < state.reportCount; ++next) {
            const Report& each = state.reports.at(next % size);
            if (each.madeBy != getpid()) {
                result.push_back(each);
            }
        }
        return result;
    });
    report(fresh);
}

}  // namespace tavrel::simulatedMac

extern "C" {

CGError CGDisplayRegisterReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                                 void* userInfo) {
    using namespace tavrel::simulatedMac;
    note("CGDisplayRegisterReconfigurationCallback");
    return SharedState::ofThisProcess().with([&](State& state) {
        if (state.refusals.registerCallback == 0) {
            const std::lock_guard lock(callbacks().mutex);
            if (callbacks().all.empty()) {
                callbacks().delivered = state.reportCount;
            }
            callbacks().all.emplace_back(callback, userInfo);
        }
        return static_cast<CGError>(state.refusals.registerCallback);
    });
}

CGError CGDisplayRemoveReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                               void* userInfo) {
    using namespace tavrel::simulatedMac;
    note("CGDisplayRemoveReconfigurationCallback");
    const std::lock_guard lock(callbacks().mutex);
    auto& all = callbacks().all;
    const auto found = std::find(all.begin(), all.end(), Callback(callback, userInfo));
    if (found == all.end()) {
        return kCGErrorIllegalArgument;
    }
    all.erase(found);
    return kCGErrorSuccess;
}
}
