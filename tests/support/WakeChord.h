#pragma once

#include "platform/HotKeys.h"

namespace tavrel::support {

/// Control, Option, Command and W, as the application registers it. In numbers, so that they
/// are stated here a second time and not taken from what is tested.
inline constexpr HotKeyRegistration wakeChord{
    .keyCode = 13, .modifiers = 0x1900, .signature = 0x4443544C, .id = 1, .options = 0};

}  // namespace tavrel::support
