#include "platform/x11/connection/EventThread.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <future>
#include <utility>

namespace tavrel::x11 {

namespace {
constexpr int forever = -1;
/// How often to look for a server that went away.
constexpr int retryMilliseconds = 1000;

void endConversation(const FileDescriptor& socket) {
    if (socket.isOpen()) {
        ::shutdown(socket.number(), SHUT_RDWR);
    }
}
}  // namespace

EventThread::EventThread(X11ServerOptions options, Client& client)
    : link_(std::move(options)), client_(client) {
    std::promise<void> started;
    std::future<void> hasStarted = started.get_future();
    thread_ = std::thread([this, &started] {
        serve();
        started.set_value();
        run();
    });
    hasStarted.wait();
}

EventThread::~EventThread() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        tasks_.clear();
        endConversation(socket_);
    }
    wakeUp_.wake();
    thread_.join();
}

void EventThread::post(Task task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wakeUp_.wake();
}

void EventThread::runTasks(Connection* connection) {
    std::vector<Task> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (const Task& task : tasks) {
        task(connection);
    }
}

bool EventThread::isStopping() {
    const std::lock_guard lock(mutex_);
    return stopping_;
}

void EventThread::run() {
    while (!isStopping()) {
        Connection* connection = serve();
        runTasks(connection);
        if (connection != nullptr) {
            while (const auto event = connection->nextEvent()) {
                client_.received(*connection, *event);
            }
            client_.settled(*connection);
            xcb_flush(connection->get());
        }
        wait(connection);
    }
}

Connection* EventThread::serve() {
    Connection* connection = link_.connection();
    if (connection != nullptr && link_.connectionsMade() != connectionsServed_) {
        connectionsServed_ = link_.connectionsMade();
        keepSocket(*connection);
        client_.connected(*connection);
    }
    return connection;
}

void EventThread::keepSocket(const Connection& connection) {
    const int socket = xcb_get_file_descriptor(connection.get());
    const std::lock_guard lock(mutex_);
    socket_ = FileDescriptor(::fcntl(socket, F_DUPFD_CLOEXEC, 0));
    if (stopping_) {
        endConversation(socket_);
    }
}

void EventThread::wait(Connection* connection) {
    if (connection != nullptr) {
        connection->drainEvents();
        if (connection->isLost() || connection->hasEvents()) {
            return;
        }
    }
    std::array<pollfd, 2> sources{{{wakeUp_.descriptor(), POLLIN, 0}, {-1, POLLIN, 0}}};
    int timeout = connectionsServed_ == 0 ? forever : retryMilliseconds;
    if (connection != nullptr) {
        sources[1].fd = xcb_get_file_descriptor(connection->get());
        const auto limit = client_.settlesAgainAfter();
        timeout = limit.has_value() ? static_cast<int>(limit->count()) : forever;
    }
    ::poll(sources.data(), sources.size(), timeout);
    wakeUp_.drain();
}

}  // namespace tavrel::x11
