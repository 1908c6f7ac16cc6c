#include "platform/dbus/DBusLid.h"

#include <utility>

#include "platform/dbus/Bus.h"
#include "platform/dbus/LidConversation.h"

namespace tavrel {

DBusLid::DBusLid(const std::optional<std::string>& busAddress)
    : thread_(
          [address = busAddress.value_or(dbus::systemBusAddress())] {
              return std::make_unique<dbus::LidConversation>(address);
          },
          [this](const dbus::LidConversation* conversation) {
              setClosed(conversation != nullptr && conversation->isClosed());
          }) {}

DBusLid::~DBusLid() = default;

void DBusLid::observe(std::function<void()> changed) {
    const std::lock_guard lock(mutex_);
    changed_ = std::move(changed);
}

void DBusLid::setClosed(bool isClosed) {
    if (isClosed_.exchange(isClosed) == isClosed) {
        return;
    }
    const std::lock_guard lock(mutex_);
    // A copy, since it may end itself.
    if (const auto changed = changed_) {
        changed();
    }
}

}  // namespace tavrel
