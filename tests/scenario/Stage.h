#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace tavrel::scenario {

/// One row of the application's window.
struct Row {
    std::string name;
    std::string explanation;
    bool isBusy = false;
    /// The position of the switch and whether it may be used; both false while busy.
    bool isOn = false;
    bool isSwitchEnabled = false;
    /// The text under a switch that may not be used; else empty.
    std::string lockText;
};

/// What the application's window shows.
struct Window {
    std::vector<Row> rows;
    /// The line above the wake button: the error if there is one, else the status.
    std::string footer;
};

/// What the window server itself says about one display.
struct ServerDisplay {
    bool isOn = false;
    /// Mode, refresh rate, position, rotation and whether it is primary, as far as this server
    /// knows them; empty for a display that is off.
    std::string place;
    friend bool operator==(const ServerDisplay&, const ServerDisplay&) = default;
};

std::ostream& operator<<(std::ostream& out, const Window& window);
std::ostream& operator<<(std::ostream& out, const std::vector<ServerDisplay>& displays);

/// A display of the story, by its place in the window's list: 0 is the first row.
using Display = std::size_t;

/// Where a scenario is played: the application and a window server, real or simulated.
///
/// Each scenario gets a new stage, with all displays on and the application running. Actions
/// return when they are done; `await` waits for their consequences.
class Stage {
public:
    virtual ~Stage() = default;

    // ---- What the user does.
    virtual void flip(Display display) = 0;
    virtual void pressRefresh() = 0;
    virtual void pressWake() = 0;
    /// Presses the global wake chord while another window has the keyboard.
    virtual void pressHotKey() = 0;
    /// Starts the application again after it has ended.
    virtual void startApplication() = 0;
    /// Blocks until the application has ended.
    virtual void quitApplication() = 0;
    /// Kills the application and every process it has started.
    virtual void killApplication() = 0;
    /// Kills the application alone: the processes it has started live on. Throws on a stage
    /// where there are none.
    virtual void crashApplication() = 0;

    // ---- What another program does, all in one change.
    virtual void switchElsewhere(const std::vector<Display>& displays, bool on) = 0;

    // ---- What can be seen.
    virtual Window window() = 0;
    /// In the order of the window's list at the beginning.
    virtual std::vector<ServerDisplay> server() = 0;
    /// The same, as it was at the beginning.
    virtual const std::vector<ServerDisplay>& serverAtFirst() const = 0;

    /// Blocks until `condition` holds. Returns false when it does not before the timeout.
    virtual bool await(const std::function<bool()>& condition) = 0;
};

}  // namespace tavrel::scenario
