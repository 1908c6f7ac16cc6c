#pragma once

#include <string>

namespace tavrel {

/// What texts for the user call this system and its keys. They are the Mac's unless a system
/// has others.
struct Words {
    /// Who changes the layout: how a sentence begins.
    std::string desktop = "macOS";
    /// What offers its control, or does not.
    std::string thisSystem = "This macOS version";
    std::string builtInDisplay = "MacBook Display";
    /// The chord that wakes all displays, by its keys' names and as short as it can be.
    std::string wakeChord = "Control–Option–Command–W";
    std::string wakeChordInShort = "⌃⌥⌘W";
};

}  // namespace tavrel
