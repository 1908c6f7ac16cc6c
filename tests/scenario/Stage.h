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
    /// The switch's position and whether it may be used; both false while busy.
    bool isOn = false;
    bool isSwitchEnabled = false;
    /// The reason shown under a switch that may not be used; else empty.
    std::string lockText;
};

/// What the application's window says.
struct Window {
    std::vector<Row> rows;
    /// The line above the wake button: the error if there is one, else the status.
    std::string footer;
};

/// What the window server itself says of one display.
struct ServerDisplay {
    bool isOn = false;
    /// Mode, refresh, position, rotation and whether it is primary, as far as this server
    /// has such things; empty for a display that is off.
    std::string place;
    friend bool operator==(const ServerDisplay&, const ServerDisplay&) = default;
};

std::ostream& operator<<(std::ostream& out, const Window& window);
std::ostream& operator<<(std::ostream& out, const std::vector<ServerDisplay>& displays);

/// A display of the story, named by its place in the window's list: 0 is the first row.
using Display = std::size_t;

/// Where a scenario is played: the application and a window server, real or simulated.
///
/// A stage is set anew for each scenario, with all displays on and the application running.
/// Acts return when they are done, not when their consequences are: those are awaited.
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
    /// Returns when the application has ended.
    virtual void quitApplication() = 0;
    /// Ends the application, and all it has started, without a chance to clean up.
    virtual void killApplication() = 0;
    /// The same to the application alone: what it has started lives on. Only on stages
    /// where it starts something.
    virtual void crashApplication() = 0;

    // ---- What another program does, all in one change.
    virtual void switchElsewhere(const std::vector<Display>& displays, bool on) = 0;

    // ---- What can be seen.
    virtual Window window() = 0;
    /// In the order of the window's list as it was at the beginning.
    virtual std::vector<ServerDisplay> server() = 0;
    /// The same, as it was when the stage was set.
    virtual const std::vector<ServerDisplay>& serverAtFirst() const = 0;

    /// Lets things happen until `condition` holds; false when it never does.
    virtual bool await(const std::function<bool()>& condition) = 0;
};

}  // namespace tavrel::scenario
