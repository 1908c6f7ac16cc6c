#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace tavrel::support {

/// One output as the X server itself describes it.
struct Monitor {
    std::string name;
    bool connected = false;
    /// Whether it shows a part of the screen. When not, all that follows is empty.
    bool on = false;
    int x = 0;
    int y = 0;
    /// The mode's own size, before any rotation.
    int width = 0;
    int height = 0;
    double refresh = 0;
    /// RandR's rotation and reflection bits; 1 is upright.
    std::uint16_t rotation = 0;
    bool primary = false;

    friend bool operator==(const Monitor&, const Monitor&) = default;
};

/// "DUMMY1 on 1920x1080@59.96 +1920+0 primary".
std::ostream& operator<<(std::ostream& out, const Monitor& monitor);

/// Asks the X server at `displayName`, over its own connection and without the code under test,
/// for every connected output, in the server's order. Throws std::runtime_error when there is
/// no server or no RandR 1.3.
std::vector<Monitor> readMonitors(const std::string& displayName);

/// The size of the whole X screen, asked for in the same way.
struct ScreenSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const ScreenSize&, const ScreenSize&) = default;
};
ScreenSize readScreenSize(const std::string& displayName);

}  // namespace tavrel::support
