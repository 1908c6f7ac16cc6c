#include "display/DisplayError.h"

#include <utility>

namespace tavrel {

DisplayError::DisplayError(Reason reason, ServerStatus code, std::string description)
    : reason_(reason), code_(code), description_(std::move(description)) {}

DisplayError DisplayError::lifecycleFailed(ServerStatus code, const Words& words) {
    return {Reason::lifecycleFailed, code,
            words.desktop + " couldn’t change the desktop display layout (error " +
                std::to_string(code) + ")"};
}

DisplayError DisplayError::invalidDisplayList() {
    return {Reason::invalidDisplayList, 0, "Couldn’t understand the connected-display list"};
}

DisplayError DisplayError::lifecycleUnavailable(const Words& words) {
    return {Reason::lifecycleUnavailable, 0,
            words.thisSystem + " doesn’t expose display enable/disable control"};
}

}  // namespace tavrel
