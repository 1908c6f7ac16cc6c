#include "platform/x11/hotkeys/X11HotKeys.h"

#include <utility>

#include "platform/MainQueue.h"
#include "platform/x11/hotkeys/HotKeyListener.h"

namespace tavrel {

class X11HotKeys::TaskHandle : public Handle {
public:
    /// Null while `slot` holds another task.
    static std::unique_ptr<Handle> install(const std::shared_ptr<Task>& slot, Task task) {
        if (*slot) {
            return nullptr;
        }
        *slot = std::move(task);
        return std::make_unique<TaskHandle>(slot);
    }

    explicit TaskHandle(const std::shared_ptr<Task>& slot) : slot_(slot) {}
    ~TaskHandle() override {
        if (const auto slot = slot_.lock()) {
            *slot = nullptr;
        }
    }

private:
    std::weak_ptr<Task> slot_;
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
    const auto runOnMainThread = [&mainQueue](const std::shared_ptr<Task>& slot) {
        return [&mainQueue, weak = std::weak_ptr(slot)] {
            mainQueue.async([weak] {
                const auto present = weak.lock();
                // A copy, since it may end its own registration.
                if (const Task task = present != nullptr ? *present : nullptr) {
                    task();
                }
            });
        };
    };
    listener_ = std::make_shared<x11::HotKeyListener>(
        x11::HotKeyListener::Handlers{.pressed = runOnMainThread(pressed_),
                                      .heldChanged = runOnMainThread(heldChanged_)},
        options);
}

X11HotKeys::~X11HotKeys() = default;

std::unique_ptr<HotKeys::Handle> X11HotKeys::installEventHandler(Task pressed) {
    return TaskHandle::install(pressed_, std::move(pressed));
}

std::unique_ptr<HotKeys::Handle> X11HotKeys::registerHotKey(const HotKeyRegistration& hotKey) {
    return listener_->claim(hotKey) ? std::make_unique<ChordHandle>(listener_) : nullptr;
}

bool X11HotKeys::isHeld() const {
    return listener_->isHeld();
}

std::unique_ptr<HotKeys::Handle> X11HotKeys::observeHeld(Task changed) {
    return TaskHandle::install(heldChanged_, std::move(changed));
}

}  // namespace tavrel
