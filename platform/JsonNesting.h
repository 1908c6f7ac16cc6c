#pragma once

#include <cstddef>
#include <string_view>

namespace tavrel {

/// Whether the values in a JSON text nest deeper than we accept of a stored one: 512 levels,
/// far more than any of ours has. To be asked before parsing: a parsed tree is copied and
/// written level by level on the stack, and takes many bytes of memory for each byte of text.
///
/// For any text, JSON or not. Takes no memory.
inline bool isNestedTooDeep(std::string_view json) {
    constexpr int maxDepth = 512;
    int depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (c == '"') {
            isInString = !isInString;
        } else if (isInString) {
            // Skips an escaped character, which may be a quotation mark.
            i += c == '\\' ? 1 : 0;
        } else if (c == '[' || c == '{') {
            if (++depth > maxDepth) {
                return true;
            }
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

}  // namespace tavrel
