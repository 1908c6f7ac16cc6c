#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/posix/WakeUp.h"
#include "platform/x11/connection/Connection.h"
#include "platform/x11/connection/ServerLink.h"

namespace tavrel::x11 {

/// A thread with a connection of its own that hands on what the server sends, for as long
/// as it lives. A connection that is lost is made anew once the server is back; where there
/// was no server from the start, one is looked for only when a task wants it.
class EventThread {
public:
    /// Called on the thread, one call at a time.
    class Client {
    public:
        virtual ~Client() = default;

        /// There is a new connection.
        virtual void connected(Connection& connection) = 0;
        virtual void received(Connection& connection, const xcb_generic_event_t& event) = 0;
        /// All events that had arrived have been handed on.
        virtual void settled(Connection& connection) = 0;
    };

    /// Null when there is no connection just now.
    using Task = std::function<void(Connection*)>;

    /// Starts the thread and returns once its first attempt to connect has ended. `client`
    /// must outlive this. Throws std::system_error where no thread can be had.
    EventThread(X11ServerOptions options, Client& client);
    /// Drops the tasks that have not begun, and returns when the thread has ended. Not to
    /// be destroyed on the thread itself.
    ~EventThread();
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    /// Runs `task` on the thread soon, in order. From any thread; does not wait.
    void post(Task task);

private:
    void runTasks(Connection* connection);
    void run();
    Connection* serve();
    void wait(Connection* connection);
    bool isStopping();

    ServerLink link_;
    Client& client_;
    std::uint64_t connectionsServed_ = 0;

    std::mutex mutex_;
    std::vector<Task> tasks_;
    bool stopping_ = false;

    /// For what the thread has to look at beside its connection.
    WakeUp wakeUp_;
    std::thread thread_;
};

}  // namespace tavrel::x11
