#include "platform/dbus/PortalHotKeys.h"

#include <optional>
#include <utility>

#include "platform/MainQueue.h"
#include "platform/dbus/ConversationThread.h"
#include "platform/dbus/ShortcutsConversation.h"

namespace tavrel {

namespace {

constexpr const char* shortcutId = "wake";

/// As freedesktop.org writes shortcuts; empty for what this application doesn't use.
std::string triggerOf(const HotKeyRegistration& hotKey) {
    constexpr std::uint32_t keyW = 13;
    constexpr std::uint32_t known =
        hotKeyModifier::control | hotKeyModifier::option | hotKeyModifier::command;
    if (hotKey.keyCode != keyW || (hotKey.modifiers & ~known) != 0 || hotKey.modifiers == 0) {
        return {};
    }
    const auto part = [&](std::uint32_t modifier, const char* name) {
        return (hotKey.modifiers & modifier) != 0 ? std::string(name) + "+" : std::string();
    };
    return part(hotKeyModifier::control, "CTRL") + part(hotKeyModifier::option, "ALT") +
           part(hotKeyModifier::command, "LOGO") + "w";
}

void run(const Task& task) {
    // A copy, since it may end its own registration.
    if (const Task copy = task) {
        copy();
    }
}

}  // namespace

struct PortalHotKeys::State {
    Task pressed;
    Task heldChanged;
    bool isClaimed = false;
    std::optional<std::string> trigger;
    std::unique_ptr<Listener> listener;
};

/// The conversation as long as the chord is claimed.
struct PortalHotKeys::Listener {
    Listener(MainQueue& mainQueue, const std::weak_ptr<State>& state, const Options& options,
             const std::string& trigger)
        : thread(
              [&mainQueue, state, options, trigger] {
                  return std::make_unique<dbus::ShortcutsConversation>(
                      options.busAddress, options.applicationId,
                      dbus::ShortcutsConversation::Shortcut{shortcutId, options.description,
                                                            trigger},
                      [&mainQueue, state] {
                          mainQueue.async([state] {
                              const auto present = state.lock();
                              if (present != nullptr && present->isClaimed) {
                                  run(present->pressed);
                              }
                          });
                      });
              },
              [this, &mainQueue, state](const dbus::ShortcutsConversation* conversation) {
                  const auto now = conversation == nullptr ? std::nullopt : conversation->trigger();
                  if (std::exchange(told, now) == now) {
                      return;
                  }
                  mainQueue.async([state, now] {
                      const auto present = state.lock();
                      if (present != nullptr && present->isClaimed) {
                          present->trigger = now;
                          run(present->heldChanged);
                      }
                  });
              }) {}

    /// The thread's.
    std::optional<std::string> told;
    dbus::ConversationThread<dbus::ShortcutsConversation> thread;
};

class PortalHotKeys::TaskHandle : public Handle {
public:
    TaskHandle(const std::shared_ptr<State>& state, Task State::*slot)
        : state_(state), slot_(slot) {}
    ~TaskHandle() override {
        if (const auto state = state_.lock()) {
            (*state).*slot_ = nullptr;
        }
    }

    /// Null while the slot holds another task.
    static std::unique_ptr<Handle> install(const std::shared_ptr<State>& state, Task State::*slot,
                                           Task task) {
        if ((*state).*slot) {
            return nullptr;
        }
        (*state).*slot = std::move(task);
        return std::make_unique<TaskHandle>(state, slot);
    }

private:
    const std::weak_ptr<State> state_;
    Task State::*slot_;
};

class PortalHotKeys::ChordHandle : public Handle {
public:
    explicit ChordHandle(const std::shared_ptr<State>& state) : state_(state) {}
    ~ChordHandle() override {
        if (const auto state = state_.lock()) {
            state->isClaimed = false;
            state->trigger.reset();
            state->listener.reset();
        }
    }

private:
    const std::weak_ptr<State> state_;
};

PortalHotKeys::PortalHotKeys(MainQueue& mainQueue, Options options)
    : mainQueue_(mainQueue), options_(std::move(options)), state_(std::make_shared<State>()) {}

PortalHotKeys::~PortalHotKeys() = default;

std::unique_ptr<HotKeys::Handle> PortalHotKeys::installEventHandler(Task pressed) {
    return TaskHandle::install(state_, &State::pressed, std::move(pressed));
}

std::unique_ptr<HotKeys::Handle> PortalHotKeys::registerHotKey(const HotKeyRegistration& hotKey) {
    const std::string trigger = triggerOf(hotKey);
    if (trigger.empty() || state_->isClaimed) {
        return nullptr;
    }
    state_->isClaimed = true;
    state_->listener =
        std::make_unique<Listener>(mainQueue_, std::weak_ptr(state_), options_, trigger);
    return std::make_unique<ChordHandle>(state_);
}

bool PortalHotKeys::isHeld() const {
    return state_->trigger.has_value();
}

std::unique_ptr<HotKeys::Handle> PortalHotKeys::observeHeld(Task changed) {
    return TaskHandle::install(state_, &State::heldChanged, std::move(changed));
}

std::string PortalHotKeys::boundTo() const {
    return state_->trigger.value_or(std::string());
}

}  // namespace tavrel
