#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tests/scenario/Stage.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppProcess.h"
#include "tests/support/Pointer.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel::scenario {

/// The built application on a real X server, operated by pointer and keyboard and read over
/// AT-SPI. The server is asked itself what is on.
class VirtualDesktopStage : public Stage {
public:
    /// Throws std::runtime_error when the application does not come up.
    explicit VirtualDesktopStage(std::size_t displays, std::string program);
    ~VirtualDesktopStage() override;
    VirtualDesktopStage(const VirtualDesktopStage&) = delete;
    VirtualDesktopStage& operator=(const VirtualDesktopStage&) = delete;

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

    /// The server's names of the displays, in the order of the window's list.
    const std::vector<std::string>& outputs() const { return outputs_; }
    support::VirtualDesktop& desktop() { return desktop_; }
    const support::UserHome& home() const { return home_; }
    /// The running application.
    support::AppProcess& application() { return *application_; }
    const support::AccessibleWindow& accessible() const { return *accessible_; }

private:
    void click(const std::function<std::optional<support::AccessibleElement>()>& find);

    std::string program_;
    support::VirtualDesktop desktop_;
    std::vector<std::string> outputs_;
    support::UserHome home_;
    support::Pointer pointer_;
    std::vector<ServerDisplay> serverAtFirst_;
    std::unique_ptr<support::AppProcess> application_;
    std::unique_ptr<support::AccessibleWindow> accessible_;
};

}  // namespace tavrel::scenario
