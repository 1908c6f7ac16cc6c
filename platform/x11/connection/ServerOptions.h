#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace tavrel {

/// Which X server, and how long to bear with it.
struct X11ServerOptions {
    /// As in the DISPLAY variable, which counts where this is absent.
    std::optional<std::string> displayName = std::nullopt;
    /// How long the server may stay silent before it is treated as gone. The default is well
    /// above what a mode change on slow hardware takes while another client holds the server.
    std::chrono::milliseconds patience{10'000};
};

}  // namespace tavrel
