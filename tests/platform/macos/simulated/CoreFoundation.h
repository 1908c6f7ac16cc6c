#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <string>

namespace tavrel::simulatedMac {

/// A Core Foundation object: some bytes and their kind. It has one owner, as nobody here
/// shares it.
struct Object {
    static constexpr CFTypeID stringType = 7;
    static constexpr CFTypeID dataType = 20;
    static constexpr CFTypeID numberType = 22;

    CFTypeID type;
    std::string bytes;
};

/// A new object, to be released by whoever gets it.
CFTypeRef makeObject(CFTypeID type, std::string bytes);
const Object& objectOf(CFTypeRef reference);

/// How many have been made and not released.
std::size_t livingObjects();

/// While `refused`, no new object can be made.
void refuseNewObjects(bool refused);

}  // namespace tavrel::simulatedMac
