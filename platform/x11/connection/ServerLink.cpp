#include "platform/x11/connection/ServerLink.h"

#include <system_error>
#include <thread>
#include <utility>

namespace tavrel::x11 {

namespace {
constexpr std::chrono::seconds pauseBetweenAttempts{1};
}

ServerLink::ServerLink(X11ServerOptions options) : options_(std::move(options)) {}

Connection* ServerLink::connection() {
    if (connection_ != nullptr) {
        connection_->drainEvents();
        dropIfLost();
    }
    if (connection_ != nullptr) {
        return connection_.get();
    }
    auto wait = std::chrono::milliseconds::zero();
    if (attemptIsDue()) {
        startAttempt();
        wait = options_.timeout;
    }
    if (attempt_.valid() && attempt_.wait_for(wait) == std::future_status::ready) {
        connection_ = attempt_.get();
        isKnownToBeGone_ = connection_ == nullptr;
        dropIfLost();
        connectionsMade_ += connection_ != nullptr ? 1U : 0U;
    }
    return connection_.get();
}

void ServerLink::dropIfLost() {
    if (connection_ != nullptr && connection_->isLost()) {
        isKnownToBeGone_ = !connection_->hasTimedOut();
        connection_.reset();
    }
}

bool ServerLink::attemptIsDue() const {
    return !attempt_.valid() && std::chrono::steady_clock::now() >= nextAttempt_;
}

void ServerLink::startAttempt() {
    nextAttempt_ = std::chrono::steady_clock::now() + pauseBetweenAttempts;
    // xcb's own call has no timeout, so it runs on a thread that we can leave behind; a
    // connection nobody waits for any more is closed when its promise is destroyed.
    std::promise<std::unique_ptr<Connection>> promise;
    std::future<std::unique_ptr<Connection>> result = promise.get_future();
    try {
        std::thread([promise = std::move(promise), options = options_]() mutable {
            promise.set_value(Connection::connect(options));
        }).detach();
    } catch (const std::system_error&) {
        return;
    }
    attempt_ = std::move(result);
}

}  // namespace tavrel::x11
