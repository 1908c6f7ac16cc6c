#include "tests/platform/macos/simulated/Carbon.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <list>
#include <sstream>
#include <string>
#include <thread>

#include "tests/platform/macos/simulated/Calls.h"
#include "tests/platform/macos/simulated/SharedState.h"

struct SimulatedEventTarget {};
struct SimulatedEvent {};
struct SimulatedEventHandlerCall {};

struct SimulatedEventHandler {
    EventHandlerUPP handler;
    void* userData;
};

struct SimulatedHotKey {
    UInt32 keyCode;
    UInt32 modifiers;
};

namespace tavrel::simulatedMac {

namespace {

constexpr OSStatus illegalArgument = -50;

struct Manager {
    std::list<SimulatedEventHandler> handlers;
    std::list<SimulatedHotKey> hotKeys;
};

/// Has no lock, as the real one is for the main thread only.
Manager& manager() {
    static const std::thread::id mainThread = std::this_thread::get_id();
    static Manager manager;
    if (std::this_thread::get_id() != mainThread) {
        std::fputs("the event manager is used on two threads\n", stderr);
        std::abort();
    }
    return manager;
}

std::string hex(std::uint32_t number) {
    std::ostringstream text;
    text << "0x" << std::hex << std::uppercase << number;
    return text.str();
}

std::string nameOf(EventTargetRef target) {
    return target == GetApplicationEventTarget() ? "application" : "another target";
}

template <typename Item>
bool remove(std::list<Item>& items, const Item* item) {
    return std::erase_if(items, [&](const Item& each) { return &each == item; }) == 1;
}

}  // namespace

std::optional<std::vector<std::int32_t>> pressHotKey(std::uint32_t keyCode,
                                                     std::uint32_t modifiers) {
    const auto& keys = manager().hotKeys;
    if (std::none_of(keys.begin(), keys.end(), [&](const SimulatedHotKey& each) {
            return each.keyCode == keyCode && each.modifiers == modifiers;
        })) {
        return std::nullopt;
    }
    std::vector<std::int32_t> statuses;
    if (SharedState::ofThisProcess().with([](State& mac) { return mac.chordsAreHeldElsewhere; })) {
        return statuses;
    }
    // A copy, since a handler may remove itself.
    for (const SimulatedEventHandler& each : std::list(manager().handlers)) {
        SimulatedEvent event;
        SimulatedEventHandlerCall call;
        statuses.push_back(each.handler(&call, &event, each.userData));
    }
    return statuses;
}

std::size_t installedEventHandlers() {
    return manager().handlers.size();
}

std::size_t registeredHotKeys() {
    return manager().hotKeys.size();
}

}  // namespace tavrel::simulatedMac

using namespace tavrel::simulatedMac;

extern "C" {

EventTargetRef GetApplicationEventTarget() {
    static SimulatedEventTarget application;
    return &application;
}

OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount typeCount,
                             const EventTypeSpec* types, void* userData,
                             EventHandlerRef* installed) {
    std::string call = "InstallEventHandler(" + nameOf(target);
    for (ItemCount i = 0; i < typeCount; ++i) {
        call += ", {" + hex(types[i].eventClass) + ", " + std::to_string(types[i].eventKind) + "}";
    }
    note(call + (userData == nullptr ? ", no user data)" : ", user data)"));
    if (const OSStatus status = refusal(&Refusals::installEventHandler)) {
        return status;
    }
    *installed = &manager().handlers.emplace_back(SimulatedEventHandler{handler, userData});
    return noErr;
}

OSStatus RemoveEventHandler(EventHandlerRef handler) {
    note("RemoveEventHandler");
    return remove(manager().handlers, handler) ? OSStatus{noErr} : illegalArgument;
}

OSStatus RegisterEventHotKey(UInt32 keyCode, UInt32 modifiers, EventHotKeyID id,
                             EventTargetRef target, OptionBits options,
                             EventHotKeyRef* registered) {
    note("RegisterEventHotKey(" + std::to_string(keyCode) + ", " + hex(modifiers) + ", {" +
         hex(id.signature) + ", " + std::to_string(id.id) + "}, " + nameOf(target) + ", " +
         std::to_string(options) + ")");
    if (const OSStatus status = refusal(&Refusals::registerHotKey)) {
        return status;
    }
    *registered = &manager().hotKeys.emplace_back(SimulatedHotKey{keyCode, modifiers});
    return noErr;
}

OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) {
    note("UnregisterEventHotKey");
    return remove(manager().hotKeys, hotKey) ? OSStatus{noErr} : illegalArgument;
}
}
