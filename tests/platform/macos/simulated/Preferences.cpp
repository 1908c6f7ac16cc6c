#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <utility>

#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/CoreFoundation.h"
#include "tests/platform/macos/simulated/Desk.h"

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

}  // namespace
}  // namespace tavrel::simulatedMac

using tavrel::simulatedMac::makeObject;
using tavrel::simulatedMac::note;
using tavrel::simulatedMac::Object;
using tavrel::simulatedMac::objectOf;
using tavrel::simulatedMac::SharedState;
using tavrel::simulatedMac::State;
using tavrel::simulatedMac::unwritten;

extern "C" {

const CFStringRef kCFPreferencesCurrentApplication =
    reinterpret_cast<CFStringRef>(&tavrel::simulatedMac::thisApplication);

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application) {
    tavrel::simulatedMac::checkApplication(application);
    const std::string& name = objectOf(key).bytes;
    {
        const std::lock_guard lock(unwritten().mutex);
        const auto found = unwritten().values.find(name);
        if (found != unwritten().values.end()) {
            return makeObject(Object::dataType, found->second);
        }
    }
    return SharedState::ofThisProcess().with([&](State& state) -> CFPropertyListRef {
        const auto* stored = findPreference(state, name);
        return stored == nullptr ? nullptr
                                 : makeObject(tavrel::simulatedMac::typeOf(stored->kind),
                                              std::string(stored->bytes.data(), stored->size));
    });
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application) {
    tavrel::simulatedMac::checkApplication(application);
    const std::string& name = objectOf(key).bytes;
    note("CFPreferencesSetAppValue(" + name + ")");
    if (objectOf(value).type != Object::dataType) {
        std::fputs("a preference that is no data\n", stderr);
        std::abort();
    }
    const std::lock_guard lock(unwritten().mutex);
    unwritten().values[name] = objectOf(value).bytes;
}

Boolean CFPreferencesAppSynchronize(CFStringRef application) {
    tavrel::simulatedMac::checkApplication(application);
    note("CFPreferencesAppSynchronize");
    const std::lock_guard lock(unwritten().mutex);
    return SharedState::ofThisProcess().with([&](State& state) -> Boolean {
        if (state.refusals.synchronize) {
            return 0;
        }
        for (const auto& [key, bytes] : std::exchange(unwritten().values, {})) {
            setPreference(state, key, tavrel::simulatedMac::Preference::Kind::data, bytes);
        }
        return 1;
    });
}
}
