#pragma once

#include <sys/types.h>
#include <xcb/xcb.h>

#include <optional>
#include <string>
#include <vector>

namespace tavrel::support {

/// A rectangle in pixels of the whole screen.
struct Bounds {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int centreX() const { return x + width / 2; }
    int centreY() const { return y + height / 2; }
    bool contains(const Bounds& other) const {
        return x <= other.x && y <= other.y && other.x + other.width <= x + width &&
               other.y + other.height <= y + height;
    }
    friend bool operator==(const Bounds&, const Bounds&) = default;
};

std::ostream& operator<<(std::ostream& out, const Bounds& bounds);

/// What the X server, and a window manager if there were one, know about a program's window.
class AppWindow {
public:
    /// The visible top-level window of the process; std::nullopt while it has none.
    static std::optional<AppWindow> find(const std::string& displayName, pid_t process);
    /// All of them, the uppermost last.
    static std::vector<AppWindow> findAll(const std::string& displayName, pid_t process);

    xcb_window_t id() const { return window_; }
    /// Whether it hides `other` where they overlap.
    bool isAbove(const AppWindow& other) const;

    /// Where it is now. Throws std::runtime_error when it is gone.
    Bounds bounds() const;

    /// The only size it asks window managers to allow; std::nullopt when it allows several.
    std::optional<Bounds> fixedSize() const;
    /// Whether it asks window managers to offer no maximising.
    bool refusesMaximising() const;

    /// Asks it to close as a window manager's close button does.
    void close() const;
    /// Gives it the keyboard focus as a window manager does.
    void focus() const;

private:
    AppWindow(std::string displayName, xcb_window_t window);

    std::string displayName_;
    xcb_window_t window_;
};

}  // namespace tavrel::support
