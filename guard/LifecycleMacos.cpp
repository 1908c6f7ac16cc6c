#include "guard/Lifecycle.h"
#include "platform/macos/MacWindowServer.h"

namespace tavrel::guard {

std::shared_ptr<DisplaySwitch> makeLifecycle() {
    return std::make_shared<MacWindowServer>();
}

}  // namespace tavrel::guard
