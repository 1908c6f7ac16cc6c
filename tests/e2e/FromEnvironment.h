#pragma once

#include <cstdlib>
#include <string>

namespace tavrel::e2e {

/// What somebody who wants more than a quick run has put into this variable.
inline int fromEnvironment(const char* name, int otherwise) {
    const char* given = std::getenv(name);
    return given == nullptr ? otherwise : std::stoi(given);
}

}  // namespace tavrel::e2e
