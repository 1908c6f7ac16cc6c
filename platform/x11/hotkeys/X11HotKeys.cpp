#include "platform/x11/hotkeys/X11HotKeys.h"

#include <utility>

#include "platform/MainQueue.h"
#include "platform/x11/hotkeys/HotKeyListener.h"

namespace tavrel {

class X11HotKeys::HandlerHandle : public Handle {
public:
    explicit HandlerHandle(const std::shared_ptr<Task>& pressed) : pressed_(pressed) {}
    ~HandlerHandle() override {
        if (const auto pressed = pressed_.lock()) {
            *pressed = nullptr;
        }
    }

private:
    std::weak_ptr<Task> pressed_;
};

class X11HotKeys::ChordHandle : public Handle {
public:
    explicit ChordHandle(const std::shared_ptr<x11::HotKeyListener>& listener)
        : listener_(listener) {}
    ~ChordHandle() override {
        if (const auto listener = listener_.lock()) {
            listener->release();
        }
    }

private:
    std::weak_ptr<x11::HotKeyListener> listener_;
};

X11HotKeys::X11HotKeys(MainQueue& mainQueue, const X11ServerOptions& options) {
    const auto run = [pressed = std::weak_ptr(pressed_)] {
        const auto present = pressed.lock();
        // A copy, since it may end its own registration.
        if (const Task task = present != nullptr ? *present : nullptr) {
            task();
        }
    };
    listener_ =
        std::make_shared<x11::HotKeyListener>([&mainQueue, run] { mainQueue.async(run); }, options);
}

X11HotKeys::~X11HotKeys() = default;

std::unique_ptr<HotKeys::Handle> X11HotKeys::installEventHandler(Task pressed) {
    if (*pressed_) {
        return nullptr;
    }
    *pressed_ = std::move(pressed);
    return std::make_unique<HandlerHandle>(pressed_);
}

std::unique_ptr<HotKeys::Handle> X11HotKeys::registerHotKey(const HotKeyRegistration& hotKey) {
    return listener_->claim(hotKey) ? std::make_unique<ChordHandle>(listener_) : nullptr;
}

}  // namespace tavrel
