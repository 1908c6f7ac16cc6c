#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Janitor.h"
#include "tests/support/LidService.h"
#include "tests/support/MessageBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaylandCompositor.h"

namespace tavrel::support {

/// A real GNOME compositor for one test: mutter without hardware, in folders and on buses of its
/// own. It leaves nothing behind, also when this process dies. Use it on the thread that created
/// it.
class GnomeDesktop {
public:
    /// A monitor as mutter lists it, and what it shows.
    struct Screen {
        std::string connector;
        bool isOn = false;
        std::string mode = {};
        int x = 0;
        int y = 0;
        double scale = 1;
        bool isPrimary = false;

        friend bool operator==(const Screen&, const Screen&) = default;
    };

    static bool isInstalled();

    /// Three monitors, Meta-0 to Meta-2.
    static std::vector<std::string> threeMonitors() {
        return {"1920x1080", "1600x900", "1280x1024"};
    }

    /// With monitors of these sizes, side by side; the first is primary, and one of 1920x1080
    /// offers the scales 1 and 2. The lid is open, if there is to be one. Blocks until mutter
    /// answers. Throws std::runtime_error with its messages when it does not.
    explicit GnomeDesktop(bool hasLid = false, std::vector<std::string> monitors = threeMonitors());
    GnomeDesktop(const GnomeDesktop&) = delete;
    GnomeDesktop& operator=(const GnomeDesktop&) = delete;

    /// As in the WAYLAND_DISPLAY variable: a path.
    std::string displayName() const { return compositor_.displayName(); }
    const std::string& busAddress() const { return bus_.address(); }
    /// Where it looks for its files, and for PipeWire.
    Environment environment() const { return compositor_.environment(); }

    /// What mutter itself says, in its order. Throws DBusError.
    std::vector<Screen> screens() const;
    Screen screen(const std::string& connector) const;

    /// The mode of one of the three monitors, which has only one.
    static std::string preferredMode(const std::string& connector);

    /// Another program changes the layout, to those of `screens` that are on.
    void apply(const std::vector<Screen>& screens) const;

    void setLidClosed(bool isClosed);

    /// Holds mutter up: it takes in what is said to it, and does and answers nothing.
    void pause() const { compositor_.pause(); }
    void resume() const { compositor_.resume(); }
    /// Kills it and blocks until it is gone.
    void kill() { compositor_.kill(); }
    /// Starts it again after it was killed.
    void start();

private:
    const std::vector<std::string> monitors_;
    TemporaryFolder folder_;
    Janitor janitor_;
    MessageBus bus_;
    MessageBus systemBus_;
    std::unique_ptr<LidService> lid_;
    WaylandCompositor compositor_{folder_.path(), janitor_};
};

std::ostream& operator<<(std::ostream& out, const GnomeDesktop::Screen& screen);

}  // namespace tavrel::support
