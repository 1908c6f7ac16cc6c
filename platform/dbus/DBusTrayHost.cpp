#include "platform/dbus/DBusTrayHost.h"

#include <utility>

namespace tavrel {

DBusTrayHost::DBusTrayHost(MainQueue& mainQueue, const std::string& address)
    : thread_([address] { return std::make_unique<dbus::TrayConversation>(address); },
              [this, &mainQueue](const dbus::TrayConversation* conversation) {
                  const bool isPresent = conversation != nullptr && conversation->isPresent();
                  const std::pair now(isPresent, isPresent ? conversation->watchers() : 0);
                  if (std::exchange(told_, now) == now) {
                      return;
                  }
                  mainQueue.async([weak = std::weak_ptr(word_), isPresent] {
                      const auto word = weak.lock();
                      if (word == nullptr) {
                          return;
                      }
                      word->isPresent = isPresent;
                      // A copy, since it may end itself.
                      if (const Task changed = word->changed) {
                          changed();
                      }
                  });
              }) {}

}  // namespace tavrel
