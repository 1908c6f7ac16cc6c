#pragma once

#include <optional>
#include <string>

namespace tavrel::simulation {

/// Whether the application may ever show this as its status.
bool isKnownStatus(const std::string& status);

/// Whether the application may ever show this as its error.
bool isKnownError(const std::optional<std::string>& error);

}  // namespace tavrel::simulation
