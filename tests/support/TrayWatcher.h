#pragma once

#include <memory>
#include <string>
#include <vector>

namespace tavrel::support {

/// The watcher of a desktop's tray on a message bus, and somebody who shows the icons. It
/// answers from a thread of its own.
class TrayWatcher {
public:
    /// Takes the place of another. Blocks until it can be asked. Throws std::runtime_error when the
    /// bus refuses.
    explicit TrayWatcher(const std::string& busAddress);
    /// Blocks until it has left the bus.
    ~TrayWatcher();
    TrayWatcher(const TrayWatcher&) = delete;
    TrayWatcher& operator=(const TrayWatcher&) = delete;

    /// The connections of the icons that have been registered so far, oldest first.
    std::vector<std::string> icons() const;

    /// Somebody starts or ends to show icons.
    void setHost(bool isPresent);

private:
    struct Served;
    std::unique_ptr<Served> served_;
};

}  // namespace tavrel::support
