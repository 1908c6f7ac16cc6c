#pragma once

#include <exception>
#include <optional>
#include <string>

#include "platform/DisplayID.h"
#include "platform/Words.h"

namespace tavrel {

/// Why a display operation failed, with the text that the user is shown for it.
class DisplayError : public std::exception {
public:
    enum class Reason {
        /// The window server refused a layout change with a status.
        lifecycleFailed,
        /// The list of connected displays could not be obtained.
        invalidDisplayList,
        /// The running system offers no way to switch displays.
        lifecycleUnavailable,
    };

    static DisplayError lifecycleFailed(ServerStatus code, const Words& words = {});
    static DisplayError invalidDisplayList();
    static DisplayError lifecycleUnavailable(const Words& words = {});

    Reason reason() const { return reason_; }
    /// The status of a `lifecycleFailed`; 0 for the other reasons.
    ServerStatus code() const { return code_; }

    /// The text for the user; never std::nullopt.
    std::optional<std::string> errorDescription() const { return description_; }
    /// Always std::nullopt: the description says everything.
    std::optional<std::string> failureReason() const { return std::nullopt; }
    std::optional<std::string> recoverySuggestion() const { return std::nullopt; }
    std::optional<std::string> helpAnchor() const { return std::nullopt; }

    /// The description, for code that catches any `std::exception`.
    const char* what() const noexcept override { return description_.c_str(); }

private:
    DisplayError(Reason reason, ServerStatus code, std::string description);

    Reason reason_;
    ServerStatus code_;
    std::string description_;
};

}  // namespace tavrel
