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

/// The application as it is composed for a Mac, and its helper, in two processes on one
/// simulated Mac. Its window is on no screen; a remote control in it clicks and looks.
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

    /// Clicks the window's red button. Returns false when there is no window.
    bool closeWindow();
    /// The two halves of quitting: asks for it, and waits until it is done.
    void beginToQuit();
    void awaitQuit();
    /// The user logs out, and the system asks the application whether it may end. Returns how many
    /// displays are on when the application answers.
    std::size_t logOut();
    /// Clicks the application's icon in the Dock.
    void clickDock();

private:
    /// Throws std::runtime_error, with what the application has written to its errors.
    [[noreturn]] void fail(const std::string& what) const;
    /// Has the application's remote control do something and returns its answer.
    nlohmann::json command(const nlohmann::json& what);
    std::vector<support::AccessibleElement> elements();
    void click(const std::function<std::optional<support::AccessibleElement>()>& find);

    support::TemporaryFolder folder_;
    simulatedMac::SharedState mac_;
    std::vector<ServerDisplay> serverAtFirst_;
    std::optional<FileDescriptor> link_;
    std::unique_ptr<support::ChildProcess> application_;
    /// Where the elements that were read last are; an element's address is its place in this.
    std::vector<support::Bounds> places_;
};

}  // namespace tavrel::scenario
