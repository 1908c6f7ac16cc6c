#pragma once

#include <filesystem>

namespace tavrel {

/// The file with this user's defaults: `tavrel/defaults.json` in the folder that
/// XDG_CONFIG_HOME names, otherwise in `.config` of the home folder. That is HOME, or what
/// the user database says. Variables that are empty or not absolute paths count as unset.
/// An empty path when there is no home folder at all.
///
/// Reads the environment, so no other thread may be changing it.
std::filesystem::path defaultsPath();

}  // namespace tavrel
