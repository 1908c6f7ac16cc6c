#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "platform/posix/FileDescriptor.h"
#include "tests/platform/macos/simulated/Desk.h"
#include "tests/scenario/Stage.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::scenario {

/// The application as it is composed for a Mac, with its guard, each in a process of its
/// own on one simulated Mac. Its window is on no screen; clicks and looks are handed to it.
class MacStage : public Stage {
public:
    /// All displays are monitors, like `display`. Throws std::runtime_error when the
    /// application does not come up.
    explicit MacStage(std::size_t displays, const simulatedMac::Display& display = {});
    ~MacStage() override;
    MacStage(const MacStage&) = delete;
    MacStage& operator=(const MacStage&) = delete;

    void flip(Display display) override;
    void pressRefresh() override;
    void pressWake() override;
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

    simulatedMac::SharedState& mac() { return mac_; }
    const support::ChildProcess& application() const { return *application_; }

    /// The window's red button; false if there is no window.
    bool closeWindow();
    /// The application's icon in the Dock.
    void clickDock();

private:
    /// What the application answers. Throws std::runtime_error when it has gone.
    nlohmann::json tell(const nlohmann::json& order);
    std::vector<support::AccessibleElement> elements();
    void click(const std::function<std::optional<support::AccessibleElement>()>& find);

    support::TemporaryFolder folder_;
    simulatedMac::SharedState mac_;
    std::vector<ServerDisplay> serverAtFirst_;
    std::optional<FileDescriptor> link_;
    std::unique_ptr<support::ChildProcess> application_;
};

}  // namespace tavrel::scenario
