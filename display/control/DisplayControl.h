#pragma once

#include <cstdint>

/// The Mac's private ways to list every display, also those taken out of the desktop, and
/// to take one out or back in. The entry points are looked up at run time, each once per
/// process; without them every function answers 1006 and nothing else happens.
///
/// From any thread. Two threads that race on the first use may both look up, and one of
/// them may still be told that there is nothing; they store the same in the end.
extern "C" {

/// Whether displays can be taken out of the desktop and back in.
bool DCTLCanControlDisplays();

/// Fills `displays` with at most `maxCount` identifiers and sets `count`. Returns 0 or
/// the server's status; 1006 without an entry point, and then neither has been touched.
std::int32_t DCTLGetDisplayList(std::uint32_t maxCount, std::uint32_t* displays,
                                std::uint32_t* count);

/// Takes one display into the desktop or out of it, permanently, in a transaction of its
/// own. Returns 0 or the status of the step that failed; 1006 without an entry point. The
/// layout has changed only if it returns 0.
std::int32_t DCTLSetDisplayEnabled(std::uint32_t displayID, bool enabled);

/// (transaction, display, 0 or 1) → status
using DCTLConfigureDisplayEnabled = std::int32_t (*)(void*, std::uint32_t, std::int32_t);
/// (room in the array, array, count) → status
using DCTLDisplayList = std::int32_t (*)(std::uint32_t, std::uint32_t*, std::uint32_t*);

/// The entry point that switches one display, or null.
DCTLConfigureDisplayEnabled resolveConfigureDisplayEnabled();

/// The entry point that lists all displays, or null.
DCTLDisplayList resolveGetDisplayList();

/// The private window-server framework, opened at the first call and never closed; null
/// when it cannot be opened.
void* openSkyLight();
}
