#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/UserDefaults.h"

namespace tavrel {

/// A store in memory. The simulated scheduler runs one thing at a time, so it has no lock.
class SimulatedUserDefaults : public UserDefaults {
public:
    std::optional<std::string> data(std::string_view key) override {
        ++reads_;
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }

    bool setData(std::string_view key, std::string_view bytes) override {
        if (!isWritable_) {
            return false;
        }
        ++writes_;
        ++generation_;
        values_.insert_or_assign(std::string(key), std::string(bytes));
        return true;
    }

    /// Changes by another program, or by a user with an editor.
    void remove(std::string_view key) {
        ++generation_;
        values_.erase(std::string(key));
    }
    void replaceFromOutside(std::string_view key, std::string bytes) {
        ++generation_;
        values_.insert_or_assign(std::string(key), std::move(bytes));
    }

    /// From now on writes are refused, or accepted again.
    void setWritable(bool isWritable) { isWritable_ = isWritable; }

    /// Grows with each change, whoever makes it.
    std::size_t generation() const { return generation_; }

    std::size_t reads() const { return reads_; }
    std::size_t writes() const { return writes_; }

private:
    std::map<std::string, std::string, std::less<>> values_;
    bool isWritable_ = true;
    std::size_t reads_ = 0;
    std::size_t writes_ = 0;
    std::size_t generation_ = 0;
};

}  // namespace tavrel
