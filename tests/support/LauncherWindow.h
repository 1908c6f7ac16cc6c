#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace tavrel::support {

/// A window of another program on a Wayland desktop, from which a user starts programs: a panel's
/// or a terminal's. Its compositor lets it hand the focus on. Use it on the thread that created it.
class LauncherWindow {
public:
    /// `displayName` is a path. Blocks until the window is shown and has the focus. Throws
    /// std::runtime_error when that never happens.
    explicit LauncherWindow(const std::string& displayName);
    ~LauncherWindow();
    LauncherWindow(const LauncherWindow&) = delete;
    LauncherWindow& operator=(const LauncherWindow&) = delete;

    /// Whether it has the focus.
    bool isActive();

    /// The key that was last pressed and let go in it, by its number from the kernel's
    /// `input-event-codes.h`; 0 for none. By the last key compositors tell that its user wants
    /// something.
    std::uint32_t lastKey();

    /// By which a program that is started from here shows that the user wants to see it. A
    /// compositor gives one always, and decides later what it is worth. Throws
    /// std::runtime_error when none comes.
    std::string newActivationToken();

private:
    struct Client;
    std::unique_ptr<Client> client_;
};

}  // namespace tavrel::support
