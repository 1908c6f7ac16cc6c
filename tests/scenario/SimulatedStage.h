#pragma once

#include <memory>

#include "app/AppDelegate.h"
#include "controller/DisplayController.h"
#include "tests/scenario/Stage.h"
#include "tests/simulated/SimulatedPlatform.h"

namespace tavrel::scenario {

/// The core on a simulated system, with the window's rules instead of a window. Time moves
/// only in `await`.
class SimulatedStage : public Stage {
public:
    explicit SimulatedStage(std::size_t displays, std::uint64_t seed = 1);
    ~SimulatedStage() override;
    SimulatedStage(const SimulatedStage&) = delete;
    SimulatedStage& operator=(const SimulatedStage&) = delete;

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

private:
    bool isLocked(const DisplayDevice& device) const;

    SimulatedPlatform system_;
    std::vector<ServerDisplay> serverAtFirst_;
    std::unique_ptr<AppDelegate> delegate_;
    std::shared_ptr<DisplayController> controller_;
};

}  // namespace tavrel::scenario
