#pragma once

#include <MacTypes.h>

// Declares the part of the Mac's Core Graphics that we call.

using CGDirectDisplayID = std::uint32_t;
using CGDisplayChangeSummaryFlags = std::uint32_t;
using CGDisplayReconfigurationCallBack = void (*)(CGDirectDisplayID display,
                                                  CGDisplayChangeSummaryFlags flags,
                                                  void* userInfo);
using CGDisplayConfigRef = struct SimulatedTransaction*;
using CGConfigureOption = std::uint32_t;

enum CGError : std::int32_t {
    kCGErrorSuccess = 0,
    kCGErrorIllegalArgument = 1001,
    kCGErrorInvalidContext = 1003,
};

extern "C" {

CGError CGGetOnlineDisplayList(std::uint32_t maxDisplays, CGDirectDisplayID* displays,
                               std::uint32_t* count);

boolean_t CGDisplayIsBuiltin(CGDirectDisplayID display);
boolean_t CGDisplayIsOnline(CGDirectDisplayID display);
boolean_t CGDisplayIsActive(CGDirectDisplayID display);
std::uint32_t CGDisplayVendorNumber(CGDirectDisplayID display);
std::uint32_t CGDisplayModelNumber(CGDirectDisplayID display);
std::uint32_t CGDisplaySerialNumber(CGDirectDisplayID display);

CGError CGBeginDisplayConfiguration(CGDisplayConfigRef* configuration);
CGError CGCancelDisplayConfiguration(CGDisplayConfigRef configuration);
CGError CGCompleteDisplayConfiguration(CGDisplayConfigRef configuration, CGConfigureOption option);

CGError CGDisplayRegisterReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                                 void* userInfo);
CGError CGDisplayRemoveReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                               void* userInfo);
}
