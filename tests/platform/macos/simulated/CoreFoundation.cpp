#include "tests/platform/macos/simulated/CoreFoundation.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace tavrel::simulatedMac {

namespace {

struct Objects {
    std::mutex mutex;
    std::map<CFTypeRef, std::unique_ptr<const Object>> living;
    bool refuses = false;
};

Objects& objects() {
    static Objects objects;
    return objects;
}

auto findLiving(CFTypeRef reference) {
    const auto found = objects().living.find(reference);
    if (found == objects().living.end()) {
        std::fputs("an object is used that was never made or has been released\n", stderr);
        std::abort();
    }
    return found;
}

/// Looks only for the bytes that no such text has.
bool isUtf8(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char each) {
        const auto byte = static_cast<unsigned char>(each);
        return byte == 0xC0 || byte == 0xC1 || byte >= 0xF5;
    });
}

std::string stringOf(const UInt8* bytes, CFIndex length) {
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

}  // namespace

CFTypeRef makeObject(CFTypeID type, std::string bytes) {
    const std::lock_guard lock(objects().mutex);
    if (objects().refuses) {
        return nullptr;
    }
    auto object = std::make_unique<const Object>(Object{type, std::move(bytes)});
    const CFTypeRef reference = object.get();
    objects().living.emplace(reference, std::move(object));
    return reference;
}

const Object& objectOf(CFTypeRef reference) {
    const std::lock_guard lock(objects().mutex);
    return *findLiving(reference)->second;
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

using namespace tavrel::simulatedMac;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;

void CFRelease(CFTypeRef object) {
    const std::lock_guard lock(objects().mutex);
    objects().living.erase(findLiving(object));
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    return objectOf(object).type;
}

CFTypeID CFDataGetTypeID() {
    return Object::dataType;
}

CFDataRef CFDataCreate(CFAllocatorRef /*allocator*/, const UInt8* bytes, CFIndex length) {
    return static_cast<CFDataRef>(makeObject(Object::dataType, stringOf(bytes, length)));
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
    std::string text = stringOf(bytes, length);
    if (encoding != kCFStringEncodingUTF8 || isExternalRepresentation != 0 || !isUtf8(text)) {
        return nullptr;
    }
    return static_cast<CFStringRef>(makeObject(Object::stringType, std::move(text)));
}
}
