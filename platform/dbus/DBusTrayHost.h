#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/TrayHost.h"
#include "platform/dbus/ConversationThread.h"

namespace tavrel {

namespace dbus {
class TrayConversation;
}

/// The tray by the word of its watcher on the session's message bus. Absent while there is no
/// bus, no watcher, or none that answers. Asks on a thread of its own.
class DBusTrayHost final : public TrayHost {
public:
    /// `address` as the bus libraries write it. `mainQueue` must outlive this. Throws
    /// std::system_error when no thread can be started.
    DBusTrayHost(MainQueue& mainQueue, const std::string& address);
    ~DBusTrayHost() override;
    DBusTrayHost(const DBusTrayHost&) = delete;
    DBusTrayHost& operator=(const DBusTrayHost&) = delete;

    bool isPresent() const override { return word_->isPresent; }
    void observe(Task changed) override { word_->changed = std::move(changed); }

private:
    /// The main thread's.
    struct Word {
        bool isPresent = false;
        Task changed;
    };

    const std::shared_ptr<Word> word_ = std::make_shared<Word>();
    /// The thread's: the watcher that was last told of, empty for no tray.
    std::string told_;
    /// Last, so that it finds all the others.
    dbus::ConversationThread<dbus::TrayConversation> thread_;
};

}  // namespace tavrel
