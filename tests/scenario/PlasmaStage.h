#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/plasma/PlasmaLayoutServer.h"
#include "platform/plasma/connection/ServerLink.h"
#include "tests/scenario/Stage.h"
#include "tests/support/AccessibilityBus.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppProcess.h"
#include "tests/support/PlasmaDesktop.h"

namespace tavrel::scenario {

/// The built application as a native client of a real Plasma compositor, operated and read over
/// AT-SPI. The compositor is asked itself what is on.
class PlasmaStage : public Stage {
public:
    /// On an X server, if one is named: see `PlasmaDesktop`. Throws std::runtime_error when the
    /// application does not come up.
    PlasmaStage(std::size_t displays, std::string program, const std::string& xDisplayName = {});
    ~PlasmaStage() override;
    PlasmaStage(const PlasmaStage&) = delete;
    PlasmaStage& operator=(const PlasmaStage&) = delete;

    void flip(Display display) override;
    void pressRefresh() override;
    void pressWake() override;
    /// Throws: nobody holds keys for all programs there.
    void pressHotKey() override;
    void startApplication() override;
    void quitApplication() override;
    void killApplication() override;
    void crashApplication() override;
    void switchElsewhere(const std::vector<Display>& displays, bool on) override;
    Window window() override;
    std::vector<ServerDisplay> server() override;
    const std::vector<ServerDisplay>& serverAtFirst() const override { return serverAtFirst_; }
    bool await(const std::function<bool()>& condition) override;

    support::PlasmaDesktop& desktop() { return desktop_; }
    const support::UserHome& home() const { return home_; }
    const std::string& sessionBusAddress() const { return bus_.sessionAddress(); }
    /// What makes a program one of this desktop's.
    support::Environment environment() const;
    const std::vector<std::string>& outputs() const { return connectors_; }
    /// The running application.
    support::AppProcess& application() { return *application_; }
    const support::AccessibleWindow& accessible() const { return *accessible_; }

private:
    support::PlasmaDesktop desktop_;
    support::UserHome home_;
    support::AccessibilityBus bus_;
    std::string program_;
    plasma::ServerLink elsewhereLink_;
    plasma::PlasmaLayoutServer elsewhere_;
    /// In the order of the window's list, which is that of their numbers.
    std::vector<DisplayID> displays_;
    std::vector<std::string> connectors_;
    std::vector<ServerDisplay> serverAtFirst_;
    std::unique_ptr<support::AppProcess> application_;
    std::unique_ptr<support::AccessibleWindow> accessible_;
};

}  // namespace tavrel::scenario
