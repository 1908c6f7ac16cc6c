#pragma once

#include <string>

#include "platform/dbus/Bus.h"

namespace tavrel::dbus {

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

}  // namespace tavrel::dbus
