#include "platform/x11/hotkeys/KeyPressFilter.h"

namespace tavrel::x11 {

bool KeyPressFilter::pressed(Keycode key, std::uint32_t time) {
    if (!down_.insert(key).second) {
        return false;
    }
    const auto release = releases_.find(key);
    const bool goesOn = release != releases_.end() && release->second == time;
    return repeatsAreDetectable_ || !goesOn;
}

void KeyPressFilter::released(Keycode key, std::uint32_t time) {
    down_.erase(key);
    releases_[key] = time;
}

}  // namespace tavrel::x11
