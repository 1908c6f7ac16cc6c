#pragma once

#include <chrono>
#include <deque>
#include <vector>

#include "watchdog/protocol/MessageChannel.h"

namespace tavrel::watchdog {

/// The other side of a conversation, which says what it was given, and is then gone.
class ScriptedChannel : public MessageChannel {
public:
    explicit ScriptedChannel(std::deque<Received> said) : said_(std::move(said)) {}

    bool send(const Message& message) override {
        heard_.push_back(message);
        return true;
    }

    Received receive(std::chrono::milliseconds timeout) override {
        timeouts_.push_back(timeout);
        if (said_.empty()) {
            return NoMessage::gone;
        }
        Received next = said_.front();
        said_.pop_front();
        return next;
    }

    void hangUp() override {
        hungUp_ = true;
        said_.clear();
    }

    const std::vector<Message>& heard() const { return heard_; }
    bool hungUp() const { return hungUp_; }
    /// How long each message was waited for.
    const std::vector<std::chrono::milliseconds>& timeouts() const { return timeouts_; }

private:
    std::deque<Received> said_;
    std::vector<Message> heard_;
    bool hungUp_ = false;
    std::vector<std::chrono::milliseconds> timeouts_;
};

}  // namespace tavrel::watchdog
