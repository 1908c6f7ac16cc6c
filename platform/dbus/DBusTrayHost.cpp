#include "platform/dbus/DBusTrayHost.h"

#include <chrono>

#include "platform/dbus/Bus.h"

namespace tavrel {

namespace dbus {

namespace {

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherObject = "/StatusNotifierWatcher";

}  // namespace

/// One connection to a session's message bus, over which the watcher of the tray is asked
/// whether anybody shows icons: the desktop's StatusNotifierWatcher. It tells when to ask again,
/// and is not started for this.
///
/// For one thread. Nothing here blocks, whatever the bus and the watcher do.
class TrayConversation {
public:
    explicit TrayConversation(const std::string& address);
    TrayConversation(const TrayConversation&) = delete;
    TrayConversation& operator=(const TrayConversation&) = delete;

    bool serve();
    Wait nextWait() const;

    /// The connection of the watcher that has said that icons are shown: another one knows
    /// nothing of what was registered with the last. Empty while none says so.
    const std::string& presentBy() const { return presentBy_; }

private:
    void ask();

    static int answered(sd_bus_message* message, void* self, sd_bus_error* error);
    static int watcherChanged(sd_bus_message* message, void* self, sd_bus_error* error);
    static int hostsChanged(sd_bus_message* message, void* self, sd_bus_error* error);

    std::string presentBy_;
    Bus bus_;
    /// The last question; an earlier one's answer is out of date. Goes before the bus.
    PendingCall pending_;
};

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
        newCallToRunning(*bus_, watcher, watcherObject, "org.freedesktop.DBus.Properties", "Get");
    if (question == nullptr) {
        return;
    }
    sd_bus_message_append(question.get(), "ss", watcher, "IsStatusNotifierHostRegistered");
    pending_ = send(*bus_, question, &answered, this, forever);
}

int TrayConversation::answered(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    int isPresent = 0;
    const bool isAnswer = sd_bus_message_is_method_error(message, nullptr) <= 0 &&
                          sd_bus_message_read(message, "v", "b", &isPresent) >= 0;
    const char* watcherConnection = sd_bus_message_get_sender(message);
    static_cast<TrayConversation*>(self)->presentBy_ =
        isAnswer && isPresent != 0 && watcherConnection != nullptr ? watcherConnection : "";
    return 0;
}

int TrayConversation::watcherChanged(sd_bus_message* message, void* self, sd_bus_error* error) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &now) >= 0 && *now == '\0') {
        // It has gone: nobody has to be asked, and nobody's earlier word counts.
        auto& conversation = *static_cast<TrayConversation*>(self);
        conversation.pending_.reset();
        conversation.presentBy_.clear();
        return 0;
    }
    return hostsChanged(message, self, error);
}

int TrayConversation::hostsChanged(sd_bus_message* /*message*/, void* self,
                                   sd_bus_error* /*error*/) {
    static_cast<TrayConversation*>(self)->ask();
    return 0;
}

}  // namespace dbus

DBusTrayHost::DBusTrayHost(MainQueue& mainQueue, const std::string& address)
    : thread_([address] { return std::make_unique<dbus::TrayConversation>(address); },
              [this, &mainQueue](const dbus::TrayConversation* conversation) {
                  const std::string now =
                      conversation != nullptr ? conversation->presentBy() : std::string();
                  if (std::exchange(told_, now) == now) {
                      return;
                  }
                  mainQueue.async([weak = std::weak_ptr(word_), isPresent = !now.empty()] {
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

DBusTrayHost::~DBusTrayHost() = default;

}  // namespace tavrel
