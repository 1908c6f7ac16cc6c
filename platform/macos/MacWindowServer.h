#pragma once

#include <mutex>

#include "platform/DisplayLifecycle.h"
#include "platform/DisplayQueries.h"

namespace tavrel {

/// The Mac's window server: its public answers, and its private switch and list.
///
/// Changes are made one at a time.
class MacWindowServer final : public DisplayLifecycle, public DisplayQueries {
public:
    /// Looks the private entry points up. Their caches have no lock, so this has to be made
    /// on the main thread before there is any thread that could use them.
    MacWindowServer();

    bool canControlDisplays() override;
    ServerStatus getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                std::uint32_t* count) override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    ServerStatus getOnlineDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                      std::uint32_t* count) override;
    bool isBuiltIn(DisplayID display) override;
    bool isOnline(DisplayID display) override;
    bool isActive(DisplayID display) override;
    std::uint32_t vendorNumber(DisplayID display) override;
    std::uint32_t modelNumber(DisplayID display) override;
    std::uint32_t serialNumber(DisplayID display) override;

    /// No change of ours is running while this is held, except one it is asked for from.
    [[nodiscard]] std::unique_lock<std::recursive_mutex> holdChanges() {
        return std::unique_lock(changing_);
    }

private:
    /// Recursive, because the server calls back on the thread that makes the change.
    std::recursive_mutex changing_;
};

}  // namespace tavrel
