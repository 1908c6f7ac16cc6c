#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/WakeUp.h"
#include "platform/x11/connection/Connection.h"
#include "platform/x11/connection/ServerLink.h"

namespace tavrel::x11 {

/// A thread with its own connection that passes on the server's events for as long as it lives.
/// After the connection is lost, it connects again once the server is back. When there was no
/// server from the start, it looks for one only when a task is posted.
class EventThread {
public:
    /// Called on the thread, one call at a time.
    class Client {
    public:
        virtual ~Client() = default;

        /// Called with each new connection, before any of its events.
        virtual void connected(Connection& connection) = 0;
        virtual void received(Connection& connection, const xcb_generic_event_t& event) = 0;
        /// Called when all events that had arrived have been passed on.
        virtual void settled(Connection& connection) = 0;
        /// How long to wait for events before `settled` is called without any; std::nullopt to
        /// wait for as long as it takes.
        virtual std::optional<std::chrono::milliseconds> settlesAgainAfter() const {
            return std::nullopt;
        }
    };

    /// Called with null while there is no connection.
    using Task = std::function<void(Connection*)>;

    /// Starts the thread and blocks until its first attempt to connect has ended. `client`
    /// must outlive this. Throws std::system_error when no thread can be started.
    EventThread(X11ServerOptions options, Client& client);
    /// Drops the tasks that have not begun, ends the connection, so that nobody waits for a server
    /// that is silent, and blocks until the thread has ended. Not to be destroyed on the thread
    /// itself.
    ~EventThread();
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    /// Runs `task` on the thread, in the order posted. From any thread. Never blocks.
    void post(Task task);

private:
    void runTasks(Connection* connection);
    void run();
    Connection* serve();
    void keepSocket(const Connection& connection);
    void wait(Connection* connection);
    bool isStopping();

    ServerLink link_;
    Client& client_;
    std::uint64_t connectionsServed_ = 0;

    std::mutex mutex_;
    std::vector<Task> tasks_;
    bool stopping_ = false;
    /// The connection's socket under a number of its own, which no other file can have got.
    FileDescriptor socket_;

    /// For tasks, and for the end.
    WakeUp wakeUp_;
    std::thread thread_;
};

}  // namespace tavrel::x11
