#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/DisplayID.h"

namespace tavrel::simulation {

/// The stored registry as a plain reader sees it, apart from the code under test:
/// identifier to time last seen. Nothing when the value does not decode.
using StoredModel = std::map<DisplayID, double>;
std::optional<StoredModel> readStored(const std::optional<std::string>& bytes);

}  // namespace tavrel::simulation
