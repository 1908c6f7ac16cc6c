#pragma once

#include <xcb/xcb.h>

#include <filesystem>
#include <string>

class QImage;

namespace tavrel::support {

/// What a window shows. Throws std::runtime_error when it is gone, or not wholly on the screen.
QImage takeScreenshot(const std::string& displayName, xcb_window_t window);

/// Writes what a window (or, without one, the whole screen) shows as a PNG file, making
/// the folders above it. Throws std::runtime_error.
void saveScreenshot(const std::string& displayName, const std::filesystem::path& file,
                    xcb_window_t window = XCB_NONE);

}  // namespace tavrel::support
