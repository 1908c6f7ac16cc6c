// What the window server answers about its displays, and its reports of what changes.
#include "tests/platform/macos/simulated/CoreGraphics.h"

#include <CoreGraphics/CoreGraphics.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>

#include "platform/ReconfigurationReports.h"
#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/Desk.h"

namespace tavrel::simulatedMac {

namespace {

constexpr std::uint32_t unknown = 0xFFFFFFFF;

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

/// The display as this process knows it. What is said of a change by another process is promised
/// to be true only once the callback about it has been called, so until then it isn't. A process
/// without a callback is told the truth.
Display known(State& state, const Display& display) {
    Display known = display;
    {
        const std::lock_guard lock(callbacks().mutex);
        if (callbacks().all.empty()) {
            return known;
        }
    }
    const std::uint64_t size = state.reports.size();
    const std::uint64_t oldest = state.reportCount > size ? state.reportCount - size : 0;
    for (auto next = std::max(callbacks().delivered, oldest); next < state.reportCount; ++next) {
        const Report& report = state.reports.at(next % size);
        const bool isSwitch =
            (report.flags & (displayChange::enabled | displayChange::disabled)) != 0;
        if (report.display == display.id && report.madeBy != getpid() && isSwitch) {
            // The first one that is not known yet says how it was before.
            known.enabled = (report.flags & displayChange::disabled) != 0;
            break;
        }
    }
    return known;
}

/// What `answer` says of the display, or −1 if the server does not know it.
template <typename Answer>
std::uint32_t ask(CGDirectDisplayID id, const Answer& answer) {
    return SharedState::ofThisProcess().with([&](State& state) -> std::uint32_t {
        const Display* display = find(state, id);
        if (display == nullptr || !display->connected) {
            return unknown;
        }
        const Display each = known(state, *display);
        return each.enabled || each.whenOff != Display::WhenOff::vanishes
                   ? static_cast<std::uint32_t>(answer(each))
                   : unknown;
    });
}

boolean_t askWhether(CGDirectDisplayID id, bool Display::*holds) {
    return static_cast<boolean_t>(ask(id, [&](const Display& each) { return each.*holds; }));
}

std::uint32_t askNumber(CGDirectDisplayID id, std::uint32_t Display::*number) {
    return ask(id, [&](const Display& each) { return each.*number; });
}

}  // namespace

void report(const std::vector<Report>& reports) {
    // A copy: nothing is promised to one who removes a callback while it is being called.
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
    report(SharedState::ofThisProcess().with([](State& state) {
        const std::uint64_t size = state.reports.size();
        const std::uint64_t oldest = state.reportCount > size ? state.reportCount - size : 0;
        std::vector<Report> fresh;
        std::uint64_t& next = callbacks().delivered;
        for (next = std::max(next, oldest); next < state.reportCount; ++next) {
            const Report& each = state.reports.at(next % size);
            if (each.madeBy != getpid()) {
                fresh.push_back(each);
            }
        }
        return fresh;
    }));
}

}  // namespace tavrel::simulatedMac

using namespace tavrel::simulatedMac;

extern "C" {

CGError CGGetOnlineDisplayList(std::uint32_t maxDisplays, CGDirectDisplayID* displays,
                               std::uint32_t* count) {
    return SharedState::ofThisProcess().with([&](State& state) {
        note("CGGetOnlineDisplayList(" + std::to_string(maxDisplays) + ")");
        const Refusals& refusals = state.refusals;
        const auto refusal = displays == nullptr ? refusals.onlineCount : refusals.onlineList;
        if (refusal != 0) {
            return static_cast<CGError>(refusal);
        }
        std::vector<CGDirectDisplayID> online;
        for (const Display& each : state.displays) {
            if (each.id != 0 && each.connected && known(state, each).enabled) {
                online.push_back(each.id);
            }
        }
        if (displays == nullptr) {
            *count = static_cast<std::uint32_t>(online.size());
            return kCGErrorSuccess;
        }
        online.resize(std::min<std::size_t>(online.size(), maxDisplays));
        std::copy(online.begin(), online.end(), displays);
        *count = static_cast<std::uint32_t>(online.size()) +
                 static_cast<std::uint32_t>(state.claimedTooMany);
        return kCGErrorSuccess;
    });
}

boolean_t CGDisplayIsBuiltin(CGDirectDisplayID display) {
    return askWhether(display, &Display::builtIn);
}

boolean_t CGDisplayIsOnline(CGDirectDisplayID display) {
    return askWhether(display, &Display::enabled);
}

boolean_t CGDisplayIsActive(CGDirectDisplayID display) {
    return askWhether(display, &Display::enabled);
}

std::uint32_t CGDisplayVendorNumber(CGDirectDisplayID display) {
    return askNumber(display, &Display::vendor);
}

std::uint32_t CGDisplayModelNumber(CGDirectDisplayID display) {
    return askNumber(display, &Display::model);
}

std::uint32_t CGDisplaySerialNumber(CGDirectDisplayID display) {
    return askNumber(display, &Display::serial);
}

CGError CGDisplayRegisterReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                                 void* userInfo) {
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
    note("CGDisplayRemoveReconfigurationCallback");
    const std::lock_guard lock(callbacks().mutex);
    return std::erase(callbacks().all, Callback(callback, userInfo)) > 0 ? kCGErrorSuccess
                                                                         : kCGErrorIllegalArgument;
}
}
