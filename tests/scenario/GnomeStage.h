#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/scenario/Stage.h"
#include "tests/support/AccessibilityBus.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppProcess.h"
#include "tests/support/GnomeDesktop.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel::scenario {

/// The built application on a real GNOME compositor, as a native window there. It is used and
/// read over AT-SPI: no pointer is moved. The compositor is asked itself what is on.
class GnomeStage final : public Stage {
public:
    /// With displays of these sizes. Throws std::runtime_error when the application does not come
    /// up.
    explicit GnomeStage(std::string program, const std::vector<std::string>& monitors =
                                                 support::GnomeDesktop::threeMonitors());
    ~GnomeStage() override;
    GnomeStage(const GnomeStage&) = delete;
    GnomeStage& operator=(const GnomeStage&) = delete;

    void flip(Display display) override;
    void pressRefresh() override;
    void pressWake() override;
    /// Throws: no program can claim keys here.
    void pressHotKey() override;
    void startApplication() override;
    void quitApplication() override;
    void killApplication() override;
    void crashApplication() override;
    /// Throws when none would be left: the compositor refuses that.
    void switchElsewhere(const std::vector<Display>& displays, bool on) override;
    Window window() override;
    std::vector<ServerDisplay> server() override;
    const std::vector<ServerDisplay>& serverAtFirst() const override { return serverAtFirst_; }
    bool await(const std::function<bool()>& condition) override;

    support::GnomeDesktop& desktop() { return desktop_; }
    const support::UserHome& home() const { return home_; }
    /// What makes a program one of this desktop's.
    support::Environment environment() const;
    support::AppProcess& application() { return *application_; }
    const support::AccessibleWindow& accessible() const { return *accessible_; }
    const std::vector<std::string>& outputs() const { return outputs_; }
    /// Has the stage know the monitors that are plugged in by now; those that are not, no more.
    void lookAgain() { outputs_ = connectorsOfRows(); }

private:
    static support::VirtualDesktop::Options asideOptions();
    std::vector<std::string> connectorsOfRows() const;
    void press(const std::string& name);

    std::string program_;
    /// For the accessibility service alone, which wants an X server.
    support::VirtualDesktop aside_{asideOptions()};
    support::GnomeDesktop desktop_;
    support::UserHome home_;
    support::TemporaryFolder accessibilityFolder_;
    support::Janitor accessibilityJanitor_{accessibilityFolder_.path()};
    support::AccessibilityBus accessibility_{accessibilityFolder_.path(), aside_.displayName(),
                                             desktop_.busAddress(), accessibilityJanitor_};
    /// The connectors, in the order of the window's list.
    std::vector<std::string> outputs_;
    std::vector<ServerDisplay> serverAtFirst_;
    std::unique_ptr<support::AppProcess> application_;
    std::unique_ptr<support::AccessibleWindow> accessible_;
};

}  // namespace tavrel::scenario
