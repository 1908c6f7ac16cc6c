#include "app/System.h"
#include "platform/posix/DefaultsPath.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/x11/X11ReconfigurationReports.h"
#include "platform/x11/X11WindowServer.h"
#include "platform/x11/hotkeys/X11HotKeys.h"

namespace tavrel {

namespace {

class X11System final : public System {
public:
    bool quitOnLastWindowClosed() const override { return true; }

    DisplaySwitch& displaySwitch() override { return windowServer_; }
    DisplayQueries& queries() override { return windowServer_; }
    ReconfigurationReports& reports() override { return reports_; }
    UserDefaults& userDefaults() override { return userDefaults_; }

    std::unique_ptr<HotKeys> makeHotKeys(MainQueue& mainQueue) override {
        return std::make_unique<X11HotKeys>(mainQueue);
    }
    std::unique_ptr<BackgroundQueue> makeBackgroundQueue() override {
        return std::make_unique<ThreadBackgroundQueue>();
    }

private:
    FileUserDefaults userDefaults_{defaultsPath()};
    X11ReconfigurationReports reports_;
    X11WindowServer windowServer_{userDefaults_};
};

}  // namespace

std::unique_ptr<System> chooseSystem() {
    return std::make_unique<X11System>();
}

}  // namespace tavrel
