#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <string_view>
#include <type_traits>

namespace tavrel::macos {

struct ReleaseObject {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Shares in a Core Foundation object, as its Create and Copy functions give it out.
/// `Reference` is the object's type as Core Foundation names it.
template <typename Reference>
using ObjectHolder = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseObject>;

using StringHolder = ObjectHolder<CFStringRef>;

/// Null when `text` is not UTF-8.
inline StringHolder makeString(std::string_view text) {
    return StringHolder(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

}  // namespace tavrel::macos
