#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/Janitor.h"
#include "tests/support/MessageBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaylandCompositor.h"

namespace tavrel::support {

/// A real Plasma compositor for one test: KWin without hardware, in folders and on a session bus
/// of its own. It leaves nothing behind, also when this process dies. Use it on the thread that
/// created it.
class PlasmaDesktop {
public:
    /// What KWin itself says of an output, to whoever asks it for support information.
    struct Screen {
        std::string name;
        bool isOn = false;
        /// As KWin writes it: "1024,0,1024x768".
        std::string geometry;
        std::string scale;

        friend bool operator==(const Screen&, const Screen&) = default;
    };

    static bool isInstalled();

    /// Outputs side by side, each 1024×768, Virtual-0 leftmost and primary. On an X server, if one
    /// is named, each is a window there, and can be unplugged: X11-0 and so on. Blocks until KWin
    /// answers. Throws std::runtime_error with its own messages when it does not start.
    explicit PlasmaDesktop(int outputs = 3, std::string xDisplayName = {});
    PlasmaDesktop(const PlasmaDesktop&) = delete;
    PlasmaDesktop& operator=(const PlasmaDesktop&) = delete;

    /// As in the WAYLAND_DISPLAY variable: a path.
    std::string displayName() const { return compositor_.displayName(); }
    const std::string& sessionBusAddress() const { return bus_.address(); }

    std::vector<Screen> screens() const;
    Screen screen(const std::string& name) const;

    /// Pulls a monitor out for good: closes its window on the X server. Blocks until KWin lists it
    /// no more; throws std::runtime_error when it goes on doing so.
    void unplug(const std::string& name) const;

    /// Holds KWin up: it takes in what is said to it, and does and answers nothing.
    void pause() const { compositor_.pause(); }
    void resume() const { compositor_.resume(); }
    /// Kills it and blocks until it is gone; its clients lose their connection.
    void kill() { compositor_.kill(); }
    /// Starts it again after it was killed, with what it has kept on the disk.
    void start();

private:
    int outputs_;
    const std::string xDisplayName_;
    TemporaryFolder folder_;
    Janitor janitor_;
    MessageBus bus_;
    WaylandCompositor compositor_{folder_.path(), janitor_};
};

std::ostream& operator<<(std::ostream& out, const PlasmaDesktop::Screen& screen);

}  // namespace tavrel::support
