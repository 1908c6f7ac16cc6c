#pragma once

#include <filesystem>

namespace tavrel {

/// Where this user's defaults are kept: `tavrel/defaults.json` in the folder that
/// XDG_CONFIG_HOME names, or else in `.config` of the home folder, which is HOME or else
/// the one of the user database. Variables that are empty or not absolute paths count as
/// unset. Empty when there is no home folder at all.
///
/// Reads the environment, so no other thread may be changing it.
std::filesystem::path defaultsPath();

}  // namespace tavrel
