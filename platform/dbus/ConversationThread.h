#pragma once

#include <poll.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include "platform/dbus/Bus.h"
#include "platform/posix/WakeUp.h"

namespace tavrel::dbus {

/// Leads one conversation over a message bus after the other, on a thread of its own, so that a
/// bus that hangs keeps nobody waiting. A bus that goes away, or was not there, is looked for
/// every few seconds.
///
/// A `Conversation` has `bool serve()`, which handles what there is to do and returns false when
/// it is over for good, and `Wait nextWait()`, which says what to wait for before the next time.
/// Neither may block.
template <typename Conversation>
class ConversationThread {
public:
    using Begin = std::function<std::unique_ptr<Conversation>()>;
    using After = std::function<void(Conversation*)>;

    /// Both run on the thread: `begin` makes the next conversation, `after` is told of it each
    /// time it was served, and gets null when it is over. Throws std::system_error when no
    /// thread can be started.
    ConversationThread(Begin begin, After after)
        : begin_(std::move(begin)), after_(std::move(after)), thread_([this] { run(); }) {}

    /// Blocks until the conversation has ended. Not to be called on its thread.
    ~ConversationThread() {
        isStopping_ = true;
        wakeUp_.wake();
        thread_.join();
    }
    ConversationThread(const ConversationThread&) = delete;
    ConversationThread& operator=(const ConversationThread&) = delete;

    /// Has the conversation served soon. From any thread.
    void wake() const { wakeUp_.wake(); }

private:
    static constexpr std::chrono::milliseconds reconnectInterval{5000};

    void run() {
        while (!isStopping_) {
            converse();
            after_(nullptr);
            if (!isStopping_) {
                waitFor({.descriptor = -1, .events = 0, .timeout = reconnectInterval});
            }
        }
    }

    void converse() {
        const std::unique_ptr<Conversation> conversation = begin_();
        while (!isStopping_ && conversation->serve()) {
            after_(conversation.get());
            waitFor(conversation->nextWait());
        }
    }

    /// Blocks until there is something to do, or the time is over.
    void waitFor(const Wait& wait) const {
        std::array<pollfd, 2> sources{
            {{wakeUp_.descriptor(), POLLIN, 0}, {wait.descriptor, wait.events, 0}}};
        ::poll(sources.data(), sources.size(), static_cast<int>(wait.timeout.count()));
        wakeUp_.drain();
    }

    const Begin begin_;
    const After after_;
    std::atomic<bool> isStopping_ = false;
    WakeUp wakeUp_;
    /// Last, so that it finds all the others.
    std::thread thread_;
};

}  // namespace tavrel::dbus
