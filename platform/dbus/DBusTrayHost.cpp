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

    /// The watcher's word so far: false while there is none.
    bool isPresent() const { return isPresent_; }

    /// How often the watcher has come or gone: a new one knows nothing of what was registered
    /// with the last.
    unsigned watchers() const { return watchers_; }

private:
    void ask();

    static int answered(sd_bus_message* message, void* self, sd_bus_error* error);
    static int watcherChanged(sd_bus_message* message, void* self, sd_bus_error* error);
    static int hostsChanged(sd_bus_message* message, void* self, sd_bus_error* error);

    bool isPresent_ = false;
    unsigned watchers_ = 0;
    Bus bus_;
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

}  // namespace dbus

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

DBusTrayHost::~DBusTrayHost() = default;

}  // namespace tavrel
