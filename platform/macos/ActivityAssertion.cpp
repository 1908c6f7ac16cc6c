#include "platform/macos/ActivityAssertion.h"

#include <objc/message.h>
#include <objc/runtime.h>

#include <cstdint>

#include "platform/macos/CoreFoundationObject.h"

namespace tavrel {

namespace {

/// Initiated by the user, but no reason to keep an idle machine from sleeping.
constexpr std::uint64_t userInitiatedAllowingIdleSystemSleep = 0x00EFFFFF;

/// Sends a message as a compiler would that has seen the method's declaration: the
/// function is to be called with the method's exact type.
template <typename Result = id, typename... Arguments>
Result send(void* receiver, const char* selector, Arguments... arguments) {
    using Method = Result (*)(id, SEL, Arguments...);
    return reinterpret_cast<Method>(&objc_msgSend)(static_cast<id>(receiver),
                                                   sel_registerName(selector), arguments...);
}

/// Strings of both libraries are the same objects.
id asObject(CFStringRef text) {
    return reinterpret_cast<id>(const_cast<void*>(static_cast<const void*>(text)));
}

}  // namespace

ActivityAssertion::ActivityAssertion(std::string_view reason) {
    const macos::StringHolder text = macos::makeString(reason);
    // Messages to nobody give nothing, so a missing class needs no special care.
    processInfo_ = send(objc_getClass("NSProcessInfo"), "processInfo");
    id activity =
        send(processInfo_, "beginActivityWithOptions:reason:", userInitiatedAllowingIdleSystemSleep,
             asObject(text.get()));
    activity_ = send(activity, "retain");
}

ActivityAssertion::~ActivityAssertion() {
    send<void>(processInfo_, "endActivity:", static_cast<id>(activity_));
    send<void>(activity_, "release");
}

}  // namespace tavrel
