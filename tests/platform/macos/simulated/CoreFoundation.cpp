#include "tests/platform/macos/simulated/CoreFoundation.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

namespace tavrel::simulatedMac {

namespace {

struct Objects {
    std::mutex mutex;
    std::map<CFTypeRef, std::unique_ptr<Object>> living;
    bool refuses = false;
};

Objects& objects() {
    static Objects objects;
    return objects;
}

Object& living(CFTypeRef reference) {
    const auto found = objects().living.find(reference);
    if (found == objects().living.end()) {
        std::fputs("what is no object, or none any more, is used as one\n", stderr);
        std::abort();
    }
    return *found->second;
}

/// How many bytes follow the first one of a character; −1 for one that cannot be first.
int following(unsigned char first) {
    return first < 0x80   ? 0
           : first < 0xC2 ? -1
           : first < 0xE0 ? 1
           : first < 0xF0 ? 2
           : first < 0xF5 ? 3
                          : -1;
}

/// Near enough: overlong forms of three and four bytes pass.
bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const int rest = following(static_cast<unsigned char>(text.front()));
        text.remove_prefix(1);
        for (int i = 0; i < rest; ++i) {
            if (text.empty() || (static_cast<unsigned char>(text.front()) & 0xC0U) != 0x80U) {
                return false;
            }
            text.remove_prefix(1);
        }
        if (rest < 0) {
            return false;
        }
    }
    return true;
}

std::string stringOf(const UInt8* bytes, CFIndex length) {
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

}  // namespace

CFTypeRef makeObject(CFTypeID type, std::string bytes) {
    auto object = std::make_unique<Object>(Object{type, std::move(bytes)});
    const std::lock_guard lock(objects().mutex);
    if (objects().refuses) {
        return nullptr;
    }
    const CFTypeRef reference = object.get();
    objects().living.emplace(reference, std::move(object));
    return reference;
}

const Object& objectOf(CFTypeRef reference) {
    const std::lock_guard lock(objects().mutex);
    return living(reference);
}

std::size_t livingObjects() {
    const std::lock_guard lock(objects().mutex);
    return objects().living.size();
}

void refuseNewObjects(bool refused) {
    const std::lock_guard lock(objects().mutex);
    objects().refuses = refused;
}

}  // namespace tavrel::simulatedMac

using tavrel::simulatedMac::makeObject;
using tavrel::simulatedMac::Object;
using tavrel::simulatedMac::objectOf;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;

void CFRelease(CFTypeRef object) {
    auto& objects = tavrel::simulatedMac::objects();
    const std::lock_guard lock(objects.mutex);
    if (--tavrel::simulatedMac::living(object).references == 0) {
        objects.living.erase(object);
    }
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    return objectOf(object).type;
}

CFTypeID CFDataGetTypeID() {
    return Object::dataType;
}

CFDataRef CFDataCreate(CFAllocatorRef /*allocator*/, const UInt8* bytes, CFIndex length) {
    return static_cast<CFDataRef>(
        makeObject(Object::dataType, tavrel::simulatedMac::stringOf(bytes, length)));
}

CFIndex CFDataGetLength(CFDataRef data) {
    return static_cast<CFIndex>(objectOf(data).bytes.size());
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return reinterpret_cast<const UInt8*>(objectOf(data).bytes.data());
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef /*allocator*/, const UInt8* bytes,
                                    CFIndex length, CFStringEncoding encoding,
                                    Boolean isExternalRepresentation) {
    std::string text = tavrel::simulatedMac::stringOf(bytes, length);
    if (encoding != kCFStringEncodingUTF8 || isExternalRepresentation != 0 ||
        !tavrel::simulatedMac::isUtf8(text)) {
        return nullptr;
    }
    return static_cast<CFStringRef>(makeObject(Object::stringType, std::move(text)));
}
}
