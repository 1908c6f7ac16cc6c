#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "platform/Lid.h"
#include "platform/dbus/ConversationThread.h"

namespace tavrel {

namespace dbus {
class LidConversation;
}

/// The lid by the word of the power services on the system's message bus. Open while there is
/// no such bus, while it does not answer, and while no service on it knows of a lid.
///
/// Asks on a thread of its own, so that a bus that hangs keeps nobody waiting. A bus that goes
/// away, or was not there, is looked for every few seconds.
class DBusLid final : public Lid {
public:
    /// Returns before the first word has come; until then the lid is open. Throws
    /// std::system_error when no thread can be started. `busAddress` as the bus libraries
    /// write it; std::nullopt for the system's bus.
    explicit DBusLid(const std::optional<std::string>& busAddress = std::nullopt);
    /// Not to be destroyed from inside the observer.
    ~DBusLid() override;
    DBusLid(const DBusLid&) = delete;
    DBusLid& operator=(const DBusLid&) = delete;

    bool isClosed() const override { return isClosed_; }
    void observe(std::function<void()> changed) override;

private:
    void setClosed(bool isClosed);

    std::atomic<bool> isClosed_ = false;
    /// Held while the observer runs; recursive, so that it may end itself.
    std::recursive_mutex mutex_;
    std::function<void()> changed_;
    /// Last, so that it finds all the others.
    dbus::ConversationThread<dbus::LidConversation> thread_;
};

}  // namespace tavrel
