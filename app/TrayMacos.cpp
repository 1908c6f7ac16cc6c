#include "app/Tray.h"

namespace tavrel {

/// The Dock keeps what has no window.
std::unique_ptr<TrayHost> makeTrayHost(MainQueue& /*mainQueue*/) {
    return nullptr;
}

}  // namespace tavrel
