#pragma once

#include <cstdint>

/// The Mac's private calls that list every display, also those that have been taken out of
/// the desktop, and that take one out or bring it back. They are looked up at run time, each
/// once per process; when one is missing, the function that needs it returns 1006 and does
/// nothing else.
///
/// Can be called on any thread. When two threads race on the first use, both may look up, and
/// one of them may be told that the call is missing although it is not; both store the same
/// result in the end.
extern "C" {

/// Returns whether displays can be taken out of the desktop and brought back.
bool DCTLCanControlDisplays();

/// Fills `displays` with at most `maxCount` identifiers and sets `count`. Returns 0 or
/// the server's status; after 1006 both are untouched.
std::int32_t DCTLGetDisplayList(std::uint32_t maxCount, std::uint32_t* displays,
                                std::uint32_t* count);

/// Takes one display into the desktop or out of it, permanently, in a transaction of its
/// own. Returns 0 or the status of the step that failed, 1006 when the call is missing. The
/// layout has changed only when 0 is returned.
std::int32_t DCTLSetDisplayEnabled(std::uint32_t displayID, bool enabled);

/// (transaction, display, 1 to enable or 0 to disable) → status
using DCTLConfigureDisplayEnabled = std::int32_t (*)(void*, std::uint32_t, std::int32_t);
/// (size of the array, array, number of displays) → status
using DCTLDisplayList = std::int32_t (*)(std::uint32_t, std::uint32_t*, std::uint32_t*);

/// Returns the call that switches one display; null when it is missing.
DCTLConfigureDisplayEnabled resolveConfigureDisplayEnabled();

/// Returns the call that lists all displays; null when it is missing.
DCTLDisplayList resolveGetDisplayList();

/// Returns the private window-server framework, which is opened at the first call and never
/// closed; null when it could not be opened then.
void* openSkyLight();
}
