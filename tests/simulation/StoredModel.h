#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/DisplayID.h"

namespace tavrel::simulation {

/// The stored registry, identifier to time last seen, read without the code under test.
using StoredModel = std::map<DisplayID, double>;

/// std::nullopt when there is no value or it does not decode.
std::optional<StoredModel> readStored(const std::optional<std::string>& bytes);

}  // namespace tavrel::simulation
