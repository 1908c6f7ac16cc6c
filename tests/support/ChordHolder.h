#pragma once

#include <string>

#include "tests/support/XConnection.h"

namespace tavrel::support {

/// Another program that has claimed the W key with every modifier for itself.
class ChordHolder {
public:
    /// Throws std::runtime_error when somebody else holds it already.
    explicit ChordHolder(const std::string& displayName);

private:
    XConnection connection_;
};

}  // namespace tavrel::support
