#pragma once

namespace tavrel::layout {

/// A part of the desktop, from its top left corner, in the desktop's own units: pixels, unless a
/// scale makes these larger.
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

}  // namespace tavrel::layout
