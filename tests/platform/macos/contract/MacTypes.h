#pragma once

#include <cstdint>

// Declares those of the Mac's basic types that the other headers here use.

using UInt8 = std::uint8_t;
using UInt32 = std::uint32_t;
using SInt32 = std::int32_t;
using Boolean = unsigned char;
using OSStatus = SInt32;
using OSType = UInt32;
using OptionBits = UInt32;
using ItemCount = unsigned long;

/// `int` on arm64; unsigned on the other kind of Mac.
using boolean_t = int;

enum { noErr = 0 };
