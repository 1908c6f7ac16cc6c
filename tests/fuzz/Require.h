#pragma once

#include <cstdlib>
#include <iostream>

namespace tavrel::fuzz {

/// Ends the process with this text unless `holds`; the fuzzer then keeps the input.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "violated: " << what << '\n';
        std::abort();
    }
}

}  // namespace tavrel::fuzz
