#include "platform/dbus/TrayConversation.h"

namespace tavrel::dbus {

namespace {

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherObject = "/StatusNotifierWatcher";

}  // namespace

TrayConversation::TrayConversation(const std::string& address) : bus_(openBus(address)) {
    if (bus_ == nullptr) {
        return;
    }
    const std::string hosts = "type='signal',sender='" + std::string(watcher) + "',interface='" +
                              watcher + "',member='StatusNotifierHost";
    addMatch(*bus_, ownerChanges(watcher), &watcherChanged, this);
    addMatch(*bus_, hosts + "Registered'", &hostsChanged, this);
    addMatch(*bus_, hosts + "Unregistered'", &hostsChanged, this);
    ask();
}

bool TrayConversation::serve() {
    return bus_ != nullptr && process(*bus_);
}

Wait TrayConversation::nextWait() const {
    return dbus::nextWait(*bus_, std::chrono::steady_clock::time_point::max());
}

void TrayConversation::ask() {
    const Message question =
        newCall(*bus_, watcher, watcherObject, "org.freedesktop.DBus.Properties", "Get");
    if (question == nullptr) {
        return;
    }
    sd_bus_message_set_auto_start(question.get(), 0);
    sd_bus_message_append(question.get(), "ss", watcher, "IsStatusNotifierHostRegistered");
    sd_bus_call_async(bus_.get(), nullptr, question.get(), &answered, this, forever);
}

int TrayConversation::answered(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    int isPresent = 0;
    const bool isAnswer = sd_bus_message_is_method_error(message, nullptr) <= 0 &&
                          sd_bus_message_read(message, "v", "b", &isPresent) >= 0;
    static_cast<TrayConversation*>(self)->isPresent_ = isAnswer && isPresent != 0;
    return 0;
}

int TrayConversation::watcherChanged(sd_bus_message* message, void* self, sd_bus_error* error) {
    ++static_cast<TrayConversation*>(self)->watchers_;
    return hostsChanged(message, self, error);
}

int TrayConversation::hostsChanged(sd_bus_message* /*message*/, void* self,
                                   sd_bus_error* /*error*/) {
    static_cast<TrayConversation*>(self)->ask();
    return 0;
}

}  // namespace tavrel::dbus
