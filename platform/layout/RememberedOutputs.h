#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/RememberedOutput.h"

namespace tavrel {
class UserDefaults;
}

namespace tavrel::x11 {

/// The key of the persistent store that holds them.
inline constexpr std::string_view rememberedOutputsKey = "TavrelRememberedOutputs";

/// The displays that were switched off here, as they were.
///
/// Kept in the persistent store and read from there each time, so that another run of the
/// application, or a helper of it, can bring them back; where the store cannot be written,
/// kept in memory. To be used by one thread at a time.
class RememberedOutputs {
public:
    explicit RememberedOutputs(UserDefaults& store);

    /// Latest last. Nothing is remembered where the store holds anything malformed.
    std::vector<RememberedOutput> all() const;

    /// Makes these all there are. Of very many, the first are given up.
    void replace(std::vector<RememberedOutput> remembered);

private:
    UserDefaults& store_;
    /// Set while the store is behind because it could not be written.
    std::optional<std::vector<RememberedOutput>> unsaved_;
};

}  // namespace tavrel::x11
