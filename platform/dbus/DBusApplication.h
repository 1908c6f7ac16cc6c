#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/dbus/ApplicationConversation.h"
#include "platform/dbus/ConversationThread.h"

namespace tavrel {

/// The application as others on the session's message bus know it: one copy owns its name, and
/// takes their calls. Has a thread and a connection of its own; a bus that ends and comes back
/// gets the name again.
///
/// Thread-safe, but for the destructor.
class DBusApplication {
public:
    using Call = dbus::ApplicationCall;

    struct Timeouts {
        /// For the bus to say whose the name is.
        std::chrono::milliseconds bus{2000};
        /// For another copy to come to the front.
        std::chrono::milliseconds other{5000};
        /// Until `serve` is called, calls are kept for it and answered at once, because this
        /// copy is still starting. After this time they are not: it is taken to hang.
        std::chrono::milliseconds start{10000};
    };

    /// `address` as the bus libraries write it. Returns at once. Throws std::system_error when
    /// no thread can be started.
    DBusApplication(const std::string& address, const dbus::ApplicationNames& names,
                    const dbus::ApplicationConversation::Invitation& invitation, Timeouts timeouts);
    DBusApplication(const std::string& address, const dbus::ApplicationNames& names,
                    const dbus::ApplicationConversation::Invitation& invitation)
        : DBusApplication(address, names, invitation, Timeouts{}) {}
    /// Gives the name back. Blocks while what `serve` was given runs on another thread.
    ~DBusApplication();
    DBusApplication(const DBusApplication&) = delete;
    DBusApplication& operator=(const DBusApplication&) = delete;

    enum class Standing {
        /// This copy has the name.
        first,
        /// Another has it, and has come to the front.
        second,
        /// There is no bus, or it does not say who has the name, or who has it does not come
        /// to the front. Should the name become free, this copy gets it.
        unsettled,
    };
    /// Blocks until it is known, for the timeouts' sum at most; whatever is not known by then
    /// stays unsettled. To be called once.
    Standing awaitStanding();

    /// Runs `serve`, on any thread, for each call that has come and will come. The caller hears
    /// of it when the call is `answered`.
    void serve(std::function<void(const Call&)> serve);
    void answered(const Call& call);

private:
    enum class State { unknown, asking, first, second, gone, decided };

    dbus::ApplicationConversation::Callbacks callbacks();
    void take(Call call);
    void turn(State state);
    void sendAnswers(dbus::ApplicationConversation* conversation);

    const std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    const Timeouts timeouts_;
    std::uint64_t numbers_ = 0;

    /// Held while `serve_` runs.
    std::mutex serving_;
    std::function<void(const Call&)> serve_;
    std::vector<Call> waiting_;

    std::mutex mutex_;
    std::condition_variable changed_;
    State state_ = State::unknown;
    std::vector<std::uint64_t> answers_;

    /// Last, so that it finds all the others.
    dbus::ConversationThread<dbus::ApplicationConversation> thread_;
};

}  // namespace tavrel
