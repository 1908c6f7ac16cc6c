#pragma once

#include <MacTypes.h>

// Declares the part of the Mac's Core Foundation that we call.

using CFTypeRef = const void*;
using CFPropertyListRef = CFTypeRef;
using CFAllocatorRef = const struct SimulatedAllocator*;
using CFStringRef = const struct SimulatedString*;
using CFDataRef = const struct SimulatedData*;
using CFIndex = long;
using CFTypeID = unsigned long;
using CFStringEncoding = UInt32;

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

extern "C" {

extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFStringRef kCFPreferencesCurrentApplication;

void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);

CFTypeID CFDataGetTypeID();
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CFIndex CFDataGetLength(CFDataRef data);
const UInt8* CFDataGetBytePtr(CFDataRef data);

CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application);
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application);
Boolean CFPreferencesAppSynchronize(CFStringRef application);
}
