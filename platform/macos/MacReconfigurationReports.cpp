#include "platform/macos/MacReconfigurationReports.h"

#include <CoreGraphics/CoreGraphics.h>

#include "platform/macos/MacWindowServer.h"

namespace tavrel {

ServerStatus MacReconfigurationReports::registerCallback(DisplayReconfigurationCallback callback,
                                                         void* userInfo) {
    return CGDisplayRegisterReconfigurationCallback(callback, userInfo);
}

ServerStatus MacReconfigurationReports::removeCallback(DisplayReconfigurationCallback callback,
                                                       void* userInfo) {
    const auto lock = ownChanges_.holdChanges();
    return CGDisplayRemoveReconfigurationCallback(callback, userInfo);
}

}  // namespace tavrel
