#include "platform/macos/MacHotKeys.h"

#include <Carbon/Carbon.h>

#include <utility>

namespace tavrel {

namespace {

/// What a press does; empty without a handler. Here because the handler is installed
/// without user data. Main thread only.
Task& pressedTask() {
    static Task task;
    return task;
}

OSStatus hotKeyPressed(EventHandlerCallRef /*next*/, EventRef /*event*/, void* /*userData*/) {
    // A copy, since it may end its own registration.
    if (const Task pressed = pressedTask()) {
        pressed();
    }
    return noErr;
}

class EventHandler final : public HotKeys::Handle {
public:
    explicit EventHandler(EventHandlerRef handler) : handler_(handler) {}
    ~EventHandler() override {
        RemoveEventHandler(handler_);
        pressedTask() = nullptr;
    }
    EventHandler(const EventHandler&) = delete;
    EventHandler& operator=(const EventHandler&) = delete;

private:
    EventHandlerRef handler_;
};

class HotKey final : public HotKeys::Handle {
public:
    HotKey(EventHotKeyRef hotKey, std::shared_ptr<int> registrations)
        : hotKey_(hotKey), registrations_(std::move(registrations)) {
        ++*registrations_;
    }
    ~HotKey() override {
        UnregisterEventHotKey(hotKey_);
        --*registrations_;
    }
    HotKey(const HotKey&) = delete;
    HotKey& operator=(const HotKey&) = delete;

private:
    EventHotKeyRef hotKey_;
    std::shared_ptr<int> registrations_;
};

}  // namespace

std::unique_ptr<HotKeys::Handle> MacHotKeys::installEventHandler(Task pressed) {
    if (pressedTask()) {
        return nullptr;
    }
    const EventTypeSpec press{kEventClassKeyboard, kEventHotKeyPressed};
    EventHandlerRef handler = nullptr;
    if (InstallEventHandler(GetApplicationEventTarget(), &hotKeyPressed, 1, &press, nullptr,
                            &handler) != noErr) {
        return nullptr;
    }
    pressedTask() = std::move(pressed);
    return std::make_unique<EventHandler>(handler);
}

std::unique_ptr<HotKeys::Handle> MacHotKeys::registerHotKey(const HotKeyRegistration& hotKey) {
    const EventHotKeyID id{hotKey.signature, hotKey.id};
    EventHotKeyRef registered = nullptr;
    if (RegisterEventHotKey(hotKey.keyCode, hotKey.modifiers, id, GetApplicationEventTarget(),
                            hotKey.options, &registered) != noErr) {
        return nullptr;
    }
    return std::make_unique<HotKey>(registered, registrations_);
}

bool MacHotKeys::isHeld() const {
    return *registrations_ > 0;
}

std::unique_ptr<HotKeys::Handle> MacHotKeys::observeHeld(Task /*changed*/) {
    return nullptr;
}

}  // namespace tavrel
