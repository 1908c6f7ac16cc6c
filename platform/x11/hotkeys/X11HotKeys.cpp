#include "platform/x11/hotkeys/X11HotKeys.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "platform/MainQueue.h"
#include "platform/x11/hotkeys/HotKeyListener.h"

namespace tavrel {

/// Who wants to hear of presses. Main thread only.
class X11HotKeys::Handlers {
public:
    std::uint64_t add(Task pressed) {
        handlers_.emplace(++lastNumber_, std::move(pressed));
        return lastNumber_;
    }

    void remove(std::uint64_t number) { handlers_.erase(number); }

    void run() const {
        // A handler may install or remove others, or itself.
        std::vector<std::uint64_t> numbers;
        for (const auto& [number, pressed] : handlers_) {
            numbers.push_back(number);
        }
        for (const std::uint64_t number : numbers) {
            if (const auto found = handlers_.find(number); found != handlers_.end()) {
                const Task pressed = found->second;
                pressed();
            }
        }
    }

private:
    std::map<std::uint64_t, Task> handlers_;
    std::uint64_t lastNumber_ = 0;
};

class X11HotKeys::HandlerHandle : public Handle {
public:
    HandlerHandle(const std::shared_ptr<Handlers>& handlers, Task pressed)
        : handlers_(handlers), number_(handlers->add(std::move(pressed))) {}
    ~HandlerHandle() override {
        if (const auto handlers = handlers_.lock()) {
            handlers->remove(number_);
        }
    }

private:
    std::weak_ptr<Handlers> handlers_;
    std::uint64_t number_;
};

class X11HotKeys::ChordHandle : public Handle {
public:
    ChordHandle(const std::shared_ptr<x11::HotKeyListener>& listener, x11::ChordGrabs::Number chord)
        : listener_(listener), chord_(chord) {}
    ~ChordHandle() override {
        if (const auto listener = listener_.lock()) {
            listener->release(chord_);
        }
    }

private:
    std::weak_ptr<x11::HotKeyListener> listener_;
    x11::ChordGrabs::Number chord_;
};

X11HotKeys::X11HotKeys(MainQueue& mainQueue, const X11ServerOptions& options)
    : handlers_(std::make_shared<Handlers>()) {
    const auto pressed = [&mainQueue, handlers = std::weak_ptr(handlers_)] {
        mainQueue.async([handlers] {
            if (const auto present = handlers.lock()) {
                present->run();
            }
        });
    };
    listener_ = std::make_shared<x11::HotKeyListener>(pressed, options);
}

X11HotKeys::~X11HotKeys() = default;

std::unique_ptr<HotKeys::Handle> X11HotKeys::installEventHandler(Task pressed) {
    return std::make_unique<HandlerHandle>(handlers_, std::move(pressed));
}

std::unique_ptr<HotKeys::Handle> X11HotKeys::registerHotKey(const HotKeyRegistration& hotKey) {
    const auto chord = listener_->claim(hotKey);
    return chord.has_value() ? std::make_unique<ChordHandle>(listener_, *chord) : nullptr;
}

}  // namespace tavrel
