#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "platform/MainQueue.h"

namespace tavrel::simulation {

/// Everything that happened, as a hash of all lines, and the last lines for a person to read.
class EventLog {
public:
    void add(Delay now, const std::string& what) {
        const std::string line = std::to_string(now.count() / 1'000'000) + "ms " + what;
        for (const char each : line) {
            hash_ = (hash_ ^ static_cast<unsigned char>(each)) * 0x100000001b3ULL;
        }
        tail_.push_back(line);
        if (tail_.size() > keptLines) {
            tail_.pop_front();
        }
    }

    std::uint64_t hash() const { return hash_; }
    const std::deque<std::string>& tail() const { return tail_; }

private:
    static constexpr std::size_t keptLines = 40;

    std::uint64_t hash_ = 0xcbf29ce484222325ULL;
    std::deque<std::string> tail_;
};

}  // namespace tavrel::simulation
