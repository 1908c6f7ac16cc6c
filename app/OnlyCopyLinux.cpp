#include <cstdlib>
#include <optional>
#include <utility>

#include "app/OnlyCopy.h"
#include "platform/dbus/DBusApplication.h"
#include "platform/posix/SessionLock.h"

namespace tavrel {

namespace {

constexpr const char* wakeAction = "wake";
constexpr const char* refreshAction = "refresh";

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

class LinuxOnlyCopy final : public OnlyCopy {
public:
    /// Returns whether this is the only copy.
    bool become() {
        switch (application_.awaitStanding()) {
            case DBusApplication::Standing::first:
                return true;
            case DBusApplication::Standing::second:
                return false;
            case DBusApplication::Standing::unsettled:
                break;
        }
        lock_.emplace(sessionLockPath(TAVREL_APPLICATION_ID));
        return !lock_->isHeldByAnother();
    }

    void serve(MainQueue& mainQueue, Handlers handlers) override {
        handlers_ = std::move(handlers);
        application_.serve([this, &mainQueue](const DBusApplication::Call& call) {
            // What waits for the main thread is dropped together with its queue. An answer from
            // there shows the caller that this copy does not hang.
            mainQueue.async([weak = std::weak_ptr(self_), call] {
                if (const auto self = weak.lock()) {
                    (*self)->handle(call);
                }
            });
        });
    }

private:
    void handle(const DBusApplication::Call& call) {
        if (call.action == wakeAction) {
            handlers_.wake();
        } else if (call.action == refreshAction) {
            handlers_.refresh();
        } else {
            handlers_.activate(call.activationToken);
        }
        application_.answered(call);
    }

    Handlers handlers_;
    const std::shared_ptr<LinuxOnlyCopy*> self_ = std::make_shared<LinuxOnlyCopy*>(this);
    std::optional<SessionLock> lock_;
    DBusApplication application_{
        dbus::sessionBusAddress(),
        {.id = TAVREL_APPLICATION_ID, .actions = {wakeAction, refreshAction}},
        {.activationToken = variable("XDG_ACTIVATION_TOKEN"),
         .startupId = variable("DESKTOP_STARTUP_ID")}};
};

}  // namespace

std::unique_ptr<OnlyCopy> becomeOnlyCopy() {
    auto copy = std::make_unique<LinuxOnlyCopy>();
    return copy->become() ? std::move(copy) : nullptr;
}

}  // namespace tavrel
