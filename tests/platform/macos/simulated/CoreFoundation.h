#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <string>

namespace tavrel::simulatedMac {

/// A Core Foundation object: some bytes and their kind, shared in by counting.
struct Object {
    static constexpr CFTypeID stringType = 7;
    static constexpr CFTypeID dataType = 20;
    static constexpr CFTypeID numberType = 22;

    CFTypeID type;
    std::string bytes;
    int references = 1;
};

/// A new object, to be released by who gets it.
CFTypeRef makeObject(CFTypeID type, std::string bytes);
const Object& objectOf(CFTypeRef reference);

/// How many have been made and not been released to the last.
std::size_t livingObjects();

/// While refused, nothing new is made of bytes.
void refuseNewObjects(bool refused);

}  // namespace tavrel::simulatedMac
