#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "app/System.h"
#include "app/Texts.h"
#include "platform/LidAwareDisplays.h"
#include "platform/dbus/Bus.h"
#include "platform/dbus/DBusLid.h"
#include "platform/dbus/DBusTrayHost.h"
#include "platform/dbus/PortalHotKeys.h"
#include "platform/posix/BufferedUserDefaults.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/session/LinuxWindowServer.h"
#include "platform/x11/hotkeys/X11HotKeys.h"

namespace tavrel {

namespace {

/// Passes on that the store is unwritable, whether that is found out before or after somebody
/// wants to know. Thread-safe.
class StoreTrouble {
public:
    void found() {
        const std::lock_guard lock(mutex_);
        isFound_ = true;
        tell();
    }

    void observe(std::function<void()> observer) {
        const std::lock_guard lock(mutex_);
        observer_ = std::move(observer);
        tell();
    }

private:
    void tell() {
        if (isFound_ && observer_ != nullptr) {
            std::exchange(observer_, nullptr)();
        }
    }

    std::mutex mutex_;
    bool isFound_ = false;
    std::function<void()> observer_;
};

class LinuxSystem final : public System {
public:
    explicit LinuxSystem(session::WindowServerKind kind) : kind_(kind) {}

    bool quitOnLastWindowClosed() const override { return true; }

    DisplaySwitch& displaySwitch() override { return *windowServer_.displaySwitch; }
    DisplayQueries& queries() override { return queriesWithLid_; }
    ReconfigurationReports& reports() override { return reportsWithLid_; }
    /// Asked on the main thread each second.
    UserDefaults& userDefaults() override { return userDefaults_.fromMemory(); }

    std::string windowServerName() const override { return std::string(session::nameOf(kind_)); }

    Words words() const override {
        return {.desktop = "The desktop",
                .thisSystem = "This desktop session",
                .builtInDisplay = "Built-in Display",
                .wakeChord = "Ctrl+Alt+Super+W",
                .wakeChordInShort = "Ctrl+Alt+Super+W"};
    }

    void observeStore(std::function<void()> unwritable) override {
        storeTrouble_->observe(std::move(unwritable));
    }

    std::unique_ptr<HotKeys> makeHotKeys(MainQueue& mainQueue) override {
        if (kind_ == session::WindowServerKind::x11) {
            return std::make_unique<X11HotKeys>(mainQueue);
        }
        return std::make_unique<PortalHotKeys>(
            mainQueue, PortalHotKeys::Options{.busAddress = dbus::sessionBusAddress(),
                                              .applicationId = TAVREL_APPLICATION_ID,
                                              .description = appTexts::wakeBothDisplays});
    }
    std::unique_ptr<BackgroundQueue> makeBackgroundQueue() override {
        return std::make_unique<ThreadBackgroundQueue>();
    }
    std::unique_ptr<TrayHost> makeTrayHost(MainQueue& mainQueue) override {
        return std::make_unique<DBusTrayHost>(mainQueue, dbus::sessionBusAddress());
    }

private:
    const session::WindowServerKind kind_;
    /// Shared with the store's thread, which may be left behind in a call that never returns.
    const std::shared_ptr<StoreTrouble> storeTrouble_ = std::make_shared<StoreTrouble>();
    BufferedUserDefaults userDefaults_{
        std::make_unique<FileUserDefaults>(defaultsPath()),
        {.onUnwritable = [trouble = storeTrouble_] { trouble->found(); }}};
    std::unique_ptr<ReconfigurationReports> reports_ = session::makeReports(kind_, userDefaults_);
    session::LinuxWindowServer windowServer_ = session::makeWindowServer(kind_, userDefaults_);
    // An X server does not know the lid; for one that does, it is nothing new.
    DBusLid lid_;
    LidAwareQueries queriesWithLid_{*windowServer_.queries, lid_};
    LidAwareReports reportsWithLid_{*reports_, lid_};
};

}  // namespace

std::unique_ptr<System> chooseSystem() {
    return std::make_unique<LinuxSystem>(session::chooseWindowServer());
}

}  // namespace tavrel
