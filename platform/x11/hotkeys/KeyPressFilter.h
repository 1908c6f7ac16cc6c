#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "platform/x11/hotkeys/KeyChord.h"

namespace tavrel::x11 {

/// Tells real presses of a key from the repeats of one that is held down.
///
/// A server with detectable repeats sends no releases between them. Any other sends a release
/// and a press with the same time for each repeat.
class KeyPressFilter {
public:
    /// Notes a press and returns whether it is a real one.
    bool pressed(Keycode key, std::uint32_t time);
    void released(Keycode key, std::uint32_t time);

    /// Whether the server sends no releases between repeats. Taken as false before this call.
    void setRepeatsAreDetectable(bool detectable) { repeatsAreDetectable_ = detectable; }

private:
    bool repeatsAreDetectable_ = false;
    std::set<Keycode> down_;
    std::map<Keycode, std::uint32_t> releases_;
};

}  // namespace tavrel::x11
