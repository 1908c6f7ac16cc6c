#include "platform/dbus/DBusLid.h"

#include <poll.h>

#include <array>
#include <chrono>
#include <utility>

#include "platform/dbus/LidConversation.h"

namespace tavrel {

namespace {

constexpr std::chrono::milliseconds reconnectInterval{5000};

/// Blocks until one of these is ready, or the time is over.
void waitFor(const WakeUp& wakeUp, const dbus::LidConversation::Wait& wait) {
    std::array<pollfd, 2> sources{
        {{wakeUp.descriptor(), POLLIN, 0}, {wait.descriptor, wait.events, 0}}};
    ::poll(sources.data(), sources.size(), static_cast<int>(wait.timeout.count()));
    wakeUp.drain();
}

}  // namespace

DBusLid::DBusLid(std::optional<std::string> busAddress)
    : busAddress_(std::move(busAddress)), thread_([this] { run(); }) {}

DBusLid::~DBusLid() {
    isStopping_ = true;
    wakeUp_.wake();
    thread_.join();
}

void DBusLid::observe(std::function<void()> changed) {
    const std::lock_guard lock(mutex_);
    changed_ = std::move(changed);
}

void DBusLid::run() {
    while (!isStopping_) {
        converse();
        setClosed(false);
        if (!isStopping_) {
            waitFor(wakeUp_, {.descriptor = -1, .events = 0, .timeout = reconnectInterval});
        }
    }
}

void DBusLid::converse() {
    dbus::LidConversation conversation(busAddress_);
    while (!isStopping_ && conversation.serve()) {
        setClosed(conversation.isClosed());
        waitFor(wakeUp_, conversation.nextWait());
    }
}

void DBusLid::setClosed(bool isClosed) {
    if (isClosed_.exchange(isClosed) == isClosed) {
        return;
    }
    const std::lock_guard lock(mutex_);
    // A copy, since it may end itself.
    if (const auto changed = changed_) {
        changed();
    }
}

}  // namespace tavrel
