#pragma once

#include <memory>
#include <string>

namespace tavrel::support {

/// Counts the signals of one name that are sent on a message bus, from when it is created on.
class SignalCount {
public:
    /// Blocks until the bus has agreed. Throws std::runtime_error when it doesn't.
    SignalCount(const std::string& busAddress, const std::string& interface,
                const std::string& member);
    ~SignalCount();
    SignalCount(const SignalCount&) = delete;
    SignalCount& operator=(const SignalCount&) = delete;

    int count() const;

private:
    struct Listener;
    std::unique_ptr<Listener> listener_;
};

}  // namespace tavrel::support
