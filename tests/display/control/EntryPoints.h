#pragma once

#include <cstdint>

// What the stand-in entry points do, wherever they are; `name` says which of them it is.
extern "C" {
std::int32_t standInConfigure(const char* name, void* configuration, std::uint32_t display,
                              std::int32_t enabled);
std::int32_t standInGetDisplayList(const char* name, std::uint32_t maxCount,
                                   std::uint32_t* displays, std::uint32_t* count);
}
