#include "app/System.h"
#include "platform/macos/ActivityAssertion.h"
#include "platform/macos/MacBackgroundQueue.h"
#include "platform/macos/MacHotKeys.h"
#include "platform/macos/MacReconfigurationReports.h"
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

private:
    /// First, before anything that has a thread.
    MacWindowServer windowServer_;
    MacReconfigurationReports reports_{windowServer_};
    MacUserDefaults userDefaults_;
    ActivityAssertion activity_{"Looks after the displays that are switched off"};
};

}  // namespace

std::unique_ptr<System> chooseSystem() {
    return std::make_unique<MacSystem>();
}

}  // namespace tavrel
