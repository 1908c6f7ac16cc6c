#pragma once

#include <algorithm>

namespace tavrel::x11 {

/// A part of the X screen, in pixels from its top left corner.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    constexpr int right() const { return x + width; }
    constexpr int bottom() const { return y + height; }

    friend constexpr bool operator==(const Area&, const Area&) = default;
};

constexpr bool overlap(const Area& a, const Area& b) {
    return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

/// The size of the X screen, in pixels and in the millimetres the server pretends.
struct ScreenSize {
    int width = 0;
    int height = 0;
    int widthInMillimetres = 0;
    int heightInMillimetres = 0;

    constexpr bool hasPixelsOf(const ScreenSize& other) const {
        return width == other.width && height == other.height;
    }

    friend constexpr bool operator==(const ScreenSize&, const ScreenSize&) = default;
};

}  // namespace tavrel::x11
