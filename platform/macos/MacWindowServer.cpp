#include "platform/macos/MacWindowServer.h"

#include <CoreGraphics/CoreGraphics.h>

#include "display/DisplayControl.h"

namespace tavrel {

namespace {

/// What the server answers, to any question, about an identifier it does not know (any
/// more). As a yes or no it would be a yes.
constexpr std::uint32_t unknownDisplay = 0xFFFFFFFF;

bool isYes(boolean_t answer) {
    return answer != 0 && static_cast<std::uint32_t>(answer) != unknownDisplay;
}

std::uint32_t numberOrZero(std::uint32_t answer) {
    return answer == unknownDisplay ? 0 : answer;
}

}  // namespace

MacWindowServer::MacWindowServer() {
    resolveConfigureDisplayEnabled();
    resolveGetDisplayList();
}

bool MacWindowServer::canControlDisplays() {
    return DCTLCanControlDisplays();
}

ServerStatus MacWindowServer::getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                             std::uint32_t* count) {
    return DCTLGetDisplayList(maxCount, displays, count);
}

ServerStatus MacWindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const auto lock = holdChanges();
    return DCTLSetDisplayEnabled(display, enabled);
}

ServerStatus MacWindowServer::getOnlineDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                                   std::uint32_t* count) {
    return CGGetOnlineDisplayList(maxCount, displays, count);
}

bool MacWindowServer::isBuiltIn(DisplayID display) {
    return isYes(CGDisplayIsBuiltin(display));
}

bool MacWindowServer::isOnline(DisplayID display) {
    return isYes(CGDisplayIsOnline(display));
}

bool MacWindowServer::isActive(DisplayID display) {
    return isYes(CGDisplayIsActive(display));
}

std::uint32_t MacWindowServer::vendorNumber(DisplayID display) {
    return numberOrZero(CGDisplayVendorNumber(display));
}

std::uint32_t MacWindowServer::modelNumber(DisplayID display) {
    return numberOrZero(CGDisplayModelNumber(display));
}

std::uint32_t MacWindowServer::serialNumber(DisplayID display) {
    return numberOrZero(CGDisplaySerialNumber(display));
}

}  // namespace tavrel
