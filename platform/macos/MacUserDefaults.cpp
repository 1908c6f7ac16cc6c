#include "platform/macos/MacUserDefaults.h"

#include "platform/macos/CoreFoundationObject.h"

namespace tavrel {

using macos::makeString;
using macos::ObjectHolder;
using macos::StringHolder;

std::optional<std::string> MacUserDefaults::data(std::string_view key) {
    const StringHolder name = makeString(key);
    if (name == nullptr) {
        return std::nullopt;
    }
    const ObjectHolder<CFPropertyListRef> value(
        CFPreferencesCopyAppValue(name.get(), kCFPreferencesCurrentApplication));
    // Anyone can put anything there, with the system's own command line tool for one.
    if (value == nullptr || CFGetTypeID(value.get()) != CFDataGetTypeID()) {
        return std::nullopt;
    }
    const auto* const data = static_cast<CFDataRef>(value.get());
    return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                       static_cast<std::size_t>(CFDataGetLength(data)));
}

bool MacUserDefaults::setData(std::string_view key, std::string_view bytes) {
    const StringHolder name = makeString(key);
    const ObjectHolder<CFDataRef> data(CFDataCreate(kCFAllocatorDefault,
                                                    reinterpret_cast<const UInt8*>(bytes.data()),
                                                    static_cast<CFIndex>(bytes.size())));
    if (name == nullptr || data == nullptr) {
        return false;
    }
    CFPreferencesSetAppValue(name.get(), data.get(), kCFPreferencesCurrentApplication);
    CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
    return true;
}

}  // namespace tavrel
