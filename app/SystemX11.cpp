#include <cstdio>
#include <filesystem>
#include <string>

#include "app/System.h"
#include "platform/LidAwareDisplays.h"
#include "platform/dbus/DBusLid.h"
#include "platform/posix/BufferedUserDefaults.h"
#include "platform/posix/DefaultsPath.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/x11/X11ReconfigurationReports.h"
#include "platform/x11/X11WindowServer.h"
#include "platform/x11/hotkeys/X11HotKeys.h"

namespace tavrel {

namespace {

void sayUnwritable(const std::filesystem::path& path) {
    const std::string name = path.empty() ? "the settings, without a home folder" : path.string();
    std::fprintf(stderr, "tavrel: cannot write %s; keeping it in memory until that is possible\n",
                 name.c_str());
}

class X11System final : public System {
public:
    bool quitOnLastWindowClosed() const override { return true; }

    DisplaySwitch& displaySwitch() override { return windowServer_; }
    DisplayQueries& queries() override { return queriesWithLid_; }
    ReconfigurationReports& reports() override { return reportsWithLid_; }
    /// Asked on the main thread each second.
    UserDefaults& userDefaults() override { return userDefaults_.fromMemory(); }

    std::unique_ptr<HotKeys> makeHotKeys(MainQueue& mainQueue) override {
        return std::make_unique<X11HotKeys>(mainQueue);
    }
    std::unique_ptr<BackgroundQueue> makeBackgroundQueue() override {
        return std::make_unique<ThreadBackgroundQueue>();
    }

private:
    const std::filesystem::path path_ = defaultsPath();
    BufferedUserDefaults userDefaults_{std::make_unique<FileUserDefaults>(path_),
                                       {.onUnwritable = [path = path_] { sayUnwritable(path); }}};
    X11ReconfigurationReports reports_;
    X11WindowServer windowServer_{userDefaults_};
    // An X server does not know the lid.
    DBusLid lid_;
    LidAwareQueries queriesWithLid_{windowServer_, lid_};
    LidAwareReports reportsWithLid_{reports_, lid_};
};

}  // namespace

std::unique_ptr<System> chooseSystem() {
    return std::make_unique<X11System>();
}

}  // namespace tavrel
