#include "tests/platform/macos/simulated/Preferences.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/CoreFoundation.h"

namespace tavrel::simulatedMac {

namespace {

/// What this process has set and not yet written.
struct Unwritten {
    std::mutex mutex;
    std::map<std::string, std::string> values;
};

Unwritten& unwritten() {
    static Unwritten unwritten;
    return unwritten;
}

/// Only its address counts.
constexpr char thisApplication = 0;

void checkApplication(CFStringRef application) {
    if (application != kCFPreferencesCurrentApplication) {
        std::fputs("preferences of another application\n", stderr);
        std::abort();
    }
}

CFTypeID typeOf(Preference::Kind kind) {
    return kind == Preference::Kind::data     ? Object::dataType
           : kind == Preference::Kind::string ? Object::stringType
                                              : Object::numberType;
}

/// Null when there is none under `key`.
Preference* find(State& state, std::string_view key) {
    auto* const found = std::find_if(
        state.preferences.begin(), state.preferences.end(), [&](const Preference& each) {
            return each.kind != Preference::Kind::none && key == each.key.data();
        });
    return found == state.preferences.end() ? nullptr : found;
}

Preference& findOrAdd(State& state, std::string_view key) {
    if (Preference* found = find(state, key)) {
        return *found;
    }
    for (Preference& each : state.preferences) {
        if (each.kind == Preference::Kind::none && key.size() < each.key.size()) {
            each.key = {};
            std::copy(key.begin(), key.end(), each.key.begin());
            return each;
        }
    }
    throw std::length_error("a simulated Mac's preferences are full");
}

void set(State& state, std::string_view key, Preference::Kind kind, std::string_view bytes) {
    Preference& preference = findOrAdd(state, key);
    if (bytes.size() > preference.bytes.size()) {
        throw std::length_error("a value is too long for a simulated Mac's preferences");
    }
    preference.kind = kind;
    preference.size = static_cast<std::uint32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), preference.bytes.begin());
}

std::string bytesOf(const Preference& preference) {
    return {preference.bytes.data(), preference.size};
}

}  // namespace

void plantPreference(SharedState& mac, std::string_view key, Preference::Kind kind,
                     std::string_view bytes) {
    mac.with([&](State& state) { set(state, key, kind, bytes); });
}

std::string preferenceData(SharedState& mac, std::string_view key) {
    return mac.with([&](State& state) {
        const Preference* found = find(state, key);
        return found != nullptr && found->kind == Preference::Kind::data ? bytesOf(*found)
                                                                         : std::string();
    });
}

}  // namespace tavrel::simulatedMac

using namespace tavrel::simulatedMac;

extern "C" {

const CFStringRef kCFPreferencesCurrentApplication =
    reinterpret_cast<CFStringRef>(&thisApplication);

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application) {
    checkApplication(application);
    const std::string& name = objectOf(key).bytes;
    {
        const std::lock_guard lock(unwritten().mutex);
        const auto found = unwritten().values.find(name);
        if (found != unwritten().values.end()) {
            return makeObject(Object::dataType, found->second);
        }
    }
    return SharedState::ofThisProcess().with([&](State& state) -> CFPropertyListRef {
        const Preference* found = find(state, name);
        return found == nullptr ? nullptr : makeObject(typeOf(found->kind), bytesOf(*found));
    });
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application) {
    checkApplication(application);
    const std::string& name = objectOf(key).bytes;
    note("CFPreferencesSetAppValue(" + name + ")");
    if (objectOf(value).type != Object::dataType) {
        std::fputs("a preference that is not data\n", stderr);
        std::abort();
    }
    const std::lock_guard lock(unwritten().mutex);
    unwritten().values[name] = objectOf(value).bytes;
}

Boolean CFPreferencesAppSynchronize(CFStringRef application) {
    checkApplication(application);
    note("CFPreferencesAppSynchronize");
    const std::lock_guard lock(unwritten().mutex);
    return SharedState::ofThisProcess().with([&](State& state) -> Boolean {
        if (state.refusals.synchronize != 0) {
            return 0;
        }
        for (const auto& [key, bytes] : std::exchange(unwritten().values, {})) {
            set(state, key, Preference::Kind::data, bytes);
        }
        return 1;
    });
}
}
