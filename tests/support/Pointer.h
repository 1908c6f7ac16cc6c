#pragma once

#include <string>

#include "tests/support/XConnection.h"

namespace tavrel::support {

/// The mouse of an X server; programs cannot tell it from a real one. Every call blocks until
/// the server has handled it.
class Pointer {
public:
    /// Throws std::runtime_error when there is no server or it has no XTEST.
    explicit Pointer(const std::string& displayName);

    /// In pixels of the whole screen.
    void moveTo(int x, int y) const;
    void press() const;
    void release() const;
    /// Moves there and clicks the first button.
    void click(int x, int y) const;

private:
    void fake(unsigned type, unsigned detail, int x, int y) const;

    XConnection connection_;
};

/// Throws std::runtime_error unless the server offers XTEST.
void requireXTest(const XConnection& connection);

}  // namespace tavrel::support
