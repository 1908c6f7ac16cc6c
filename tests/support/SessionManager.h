#pragma once

#include <memory>
#include <string>

namespace tavrel::support {

/// A session manager, as a desktop has one: programs started with its address log in, and
/// are told when the user logs out.
class SessionManager {
public:
    /// Throws std::runtime_error when it cannot listen.
    SessionManager();
    ~SessionManager();
    SessionManager(const SessionManager&) = delete;
    SessionManager& operator=(const SessionManager&) = delete;

    /// As in the SESSION_MANAGER variable.
    const std::string& address() const;

    /// Whether a program has logged in and answered the first request to save itself.
    bool hasClient() const;

    /// Asks every program to save itself and, when it has, to end. Returns at once.
    void logOut();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tavrel::support
