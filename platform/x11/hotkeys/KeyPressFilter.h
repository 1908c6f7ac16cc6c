#pragma once

#include <cstdint>
#include <map>
#include <set>

#include "platform/x11/hotkeys/KeyChord.h"

namespace tavrel::x11 {

/// Tells real presses of a key from the repeats of one that is held down.
///
/// A server that can be made to say so sends no releases between repeats. Any other sends
/// a release and a press with the very same time for each repeat.
class KeyPressFilter {
public:
    /// Whether this is a press of its own.
    bool pressed(Keycode key, std::uint32_t time);
    void released(Keycode key, std::uint32_t time);

    /// Whether the server tells repeats by sending no releases.
    void setRepeatsAreDetectable(bool detectable) { repeatsAreDetectable_ = detectable; }

private:
    bool repeatsAreDetectable_ = false;
    std::set<Keycode> down_;
    std::map<Keycode, std::uint32_t> releases_;
};

}  // namespace tavrel::x11
