// An Objective-C runtime with one class. Without its headers, since no function that receives
// every kind of message can be written as they declare it.
#include "tests/platform/macos/simulated/ObjectiveC.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string_view>

#include "tests/platform/macos/simulated/CoreFoundation.h"

#ifdef __clang__
#define RECEIVES_ALL_MESSAGES __attribute__((no_sanitize("function")))
#else
#define RECEIVES_ALL_MESSAGES
#endif

namespace tavrel::simulatedMac {

namespace {

struct Runtime {
    std::vector<Activity> activities;
    bool hasProcessInfo = true;
    std::set<std::string, std::less<>> selectors;
};

Runtime& runtime() {
    static Runtime runtime;
    return runtime;
}

// Objects are known by their addresses only.
char processInfoClass;  // NOLINT(*-avoid-non-const-global-variables)
char processInfo;       // NOLINT(*-avoid-non-const-global-variables)

/// The tokens of activities are numbers from 1, far below any address.
Activity* activityOf(const void* token) {
    const auto number = reinterpret_cast<std::uintptr_t>(token);
    auto& all = runtime().activities;
    return number >= 1 && number <= all.size() ? &all[number - 1] : nullptr;
}

[[noreturn]] void doesNotRespond(std::string_view selector) {
    std::fprintf(stderr, "unrecognized selector %s\n", std::string(selector).c_str());
    std::abort();
}

void* begin(std::uint64_t options, const void* reason) {
    runtime().activities.push_back({options, objectOf(reason).bytes, false, 1});
    // NOLINTNEXTLINE(performance-no-int-to-ptr): only ever compared, never followed.
    return reinterpret_cast<void*>(runtime().activities.size());
}

void* tell(Activity& activity, void* token, std::string_view selector) {
    if (activity.references == 0 || (selector != "retain" && selector != "release")) {
        doesNotRespond(selector);
    }
    activity.references += selector == "retain" ? 1 : -1;
    return token;
}

}  // namespace

void resetActivities() {
    runtime().activities.clear();
    runtime().hasProcessInfo = true;
}

const std::vector<Activity>& activities() {
    return runtime().activities;
}

void drainAutoreleasePool() {
    for (Activity& each : runtime().activities) {
        --each.references;
    }
}

void removeProcessInfo() {
    runtime().hasProcessInfo = false;
}

}  // namespace tavrel::simulatedMac

using namespace tavrel::simulatedMac;

extern "C" {

void* objc_getClass(const char* name) {
    return runtime().hasProcessInfo && std::string_view(name) == "NSProcessInfo" ? &processInfoClass
                                                                                 : nullptr;
}

const void* sel_registerName(const char* name) {
    return runtime().selectors.emplace(name).first->c_str();
}

/// Takes as many arguments as the longest message has. For a shorter message the others are
/// whatever is in their registers, and are not looked at.
RECEIVES_ALL_MESSAGES void* objc_msgSend(void* receiver, const void* selector, std::uint64_t first,
                                         const void* second) {
    const std::string_view name = static_cast<const char*>(selector);
    if (receiver == nullptr) {
        return nullptr;
    }
    if (receiver == &processInfoClass && name == "processInfo") {
        return &processInfo;
    }
    if (receiver == &processInfo && name == "beginActivityWithOptions:reason:") {
        return begin(first, second);
    }
    if (receiver == &processInfo && name == "endActivity:") {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): an argument of any type comes as one.
        activityOf(reinterpret_cast<const void*>(first))->hasEnded = true;
        return nullptr;
    }
    if (Activity* activity = activityOf(receiver)) {
        return tell(*activity, receiver, name);
    }
    doesNotRespond(name);
}
}
