#pragma once

#include <memory>
#include <string>

namespace tavrel::support {

/// A power service on a message bus that knows of a lid, in place of the system's own. It
/// answers from a thread of its own.
class LidService {
public:
    enum class Kind {
        /// Tells of each change.
        upower,
        /// Has to be asked.
        login,
    };

    /// Blocks until it can be asked. Throws std::runtime_error when the bus refuses.
    LidService(const std::string& busAddress, Kind kind, bool isClosed);
    /// Blocks until it has left the bus.
    ~LidService();
    LidService(const LidService&) = delete;
    LidService& operator=(const LidService&) = delete;

    void setClosed(bool isClosed);
    /// From now on it keeps its name and answers nothing.
    void hang();

private:
    struct Served;
    std::unique_ptr<Served> served_;
};

}  // namespace tavrel::support
