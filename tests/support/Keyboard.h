#pragma once

#include <xcb/xcb_keysyms.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/XConnection.h"

namespace tavrel::support {

/// X11 keysyms of the keys that tests press. Those of letters and digits are their character
/// codes.
namespace key {
inline constexpr xcb_keysym_t tab = 0xff09;
inline constexpr xcb_keysym_t enter = 0xff0d;
inline constexpr xcb_keysym_t space = 0x20;
inline constexpr xcb_keysym_t capsLock = 0xffe5;
inline constexpr xcb_keysym_t numLock = 0xff7f;
inline constexpr xcb_keysym_t shift = 0xffe1;
inline constexpr xcb_keysym_t control = 0xffe3;
inline constexpr xcb_keysym_t alt = 0xffe9;
inline constexpr xcb_keysym_t super = 0xffeb;
}  // namespace key

/// The keyboard of an X server. Keys are named by what the current layout puts on them. Every
/// call blocks until the server has handled it.
class Keyboard {
public:
    /// Throws std::runtime_error when there is no server or it has no XTEST.
    explicit Keyboard(const std::string& displayName);

    void press(xcb_keysym_t key) const;
    void release(xcb_keysym_t key) const;
    void tap(xcb_keysym_t key) const;
    /// Presses the keys in this order and releases them in the opposite one.
    void chord(const std::vector<xcb_keysym_t>& keys) const;

private:
    void fake(unsigned type, xcb_keysym_t key) const;

    XConnection connection_;
};

/// Another program that has claimed the W key with every modifier for itself.
class ChordHolder {
public:
    /// Throws std::runtime_error when another program holds it already.
    explicit ChordHolder(const std::string& displayName);

private:
    XConnection connection_;
};

}  // namespace tavrel::support
