#include "app/Tray.h"
#include "platform/dbus/DBusTrayHost.h"

namespace tavrel {

std::unique_ptr<TrayHost> makeTrayHost(MainQueue& mainQueue) {
    return std::make_unique<DBusTrayHost>(mainQueue, dbus::sessionBusAddress());
}

}  // namespace tavrel
