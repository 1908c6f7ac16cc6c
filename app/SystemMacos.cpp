#include "app/System.h"
#include "app/Texts.h"
#include "platform/macos/ActivityAssertion.h"
#include "platform/macos/MacBackgroundQueue.h"
#include "platform/macos/MacHotKeys.h"
#include "platform/macos/MacUserDefaults.h"
#include "platform/macos/MacWindowServer.h"

namespace tavrel {

namespace {

class MacSystem final : public System {
public:
    bool quitOnLastWindowClosed() const override { return false; }

    DisplaySwitch& displaySwitch() override { return windowServer_; }
    DisplayQueries& queries() override { return windowServer_; }
    ReconfigurationReports& reports() override { return reports_; }
    UserDefaults& userDefaults() override { return userDefaults_; }

    void observeStore(std::function<void()> /*unwritable*/) override {}

    std::unique_ptr<HotKeys> makeHotKeys(MainQueue& /*mainQueue*/) override {
        return std::make_unique<MacHotKeys>();
    }
    std::unique_ptr<BackgroundQueue> makeBackgroundQueue() override {
        return std::make_unique<MacBackgroundQueue>();
    }
    /// The Dock keeps what has no window.
    std::unique_ptr<TrayHost> makeTrayHost(MainQueue& /*mainQueue*/) override { return nullptr; }

private:
    /// First, before anything that has a thread.
    MacWindowServer windowServer_;
    MacReconfigurationReports reports_{windowServer_};
    MacUserDefaults userDefaults_;
    ActivityAssertion activity_{appTexts::activityReason};
};

}  // namespace

std::unique_ptr<System> chooseSystem() {
    return std::make_unique<MacSystem>();
}

}  // namespace tavrel
