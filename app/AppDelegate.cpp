#include "app/AppDelegate.h"

#include "controller/WakeAllNotification.h"
#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/NotificationCenter.h"
#include "registry/DisplayRegistry.h"

namespace tavrel {

namespace {

constexpr HotKeyRegistration wakeChord{
    .keyCode = 13,  // W on the US layout
    .modifiers = hotKeyModifier::command | hotKeyModifier::option | hotKeyModifier::control,
    .signature = 0x4443544C,  // 'DCTL'
    .id = 1,
    .options = 0,
};

}  // namespace

AppDelegate::AppDelegate(const Platform& platform, HotKeys& hotKeys)
    : platform_(platform), hotKeys_(hotKeys) {}

void AppDelegate::applicationDidFinishLaunching() {
    eventHandlerRef_ = hotKeys_.installEventHandler(
        [&center = platform_.notificationCenter] { center.post(wakeAllDisplays); });
    hotKeyRef_ = hotKeys_.registerHotKey(wakeChord);
}

std::vector<DisplayID> AppDelegate::inactiveDisplays() const {
    const auto moment = platform_.queries.now();
    std::vector<DisplayID> inactive;
    for (const StoredDisplay& display : DisplayRegistry::knownDisplays(platform_.userDefaults)) {
        if (!moment->isActive(display.id)) {
            inactive.push_back(display.id);
        }
    }
    return inactive;
}

void AppDelegate::applicationWillTerminate() {
    auto moment = platform_.queries.now();
    for (const StoredDisplay& display : DisplayRegistry::knownDisplays(platform_.userDefaults)) {
        if (!moment->isActive(display.id)) {
            platform_.displaySwitch.setDisplayEnabled(display.id, true);
            moment = platform_.queries.now();
        }
    }
    hotKeyRef_.reset();
    eventHandlerRef_.reset();
}

}  // namespace tavrel
