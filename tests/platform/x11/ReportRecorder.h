#pragma once

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/layout/LayoutDiff.h"

namespace tavrel {

/// A callback's user info that writes down every report.
class ReportRecorder {
public:
    static void callback(DisplayID display, std::uint32_t flags, void* recorder) {
        auto& self = *static_cast<ReportRecorder*>(recorder);
        const std::lock_guard lock(self.mutex_);
        self.reports_.push_back({display, flags});
    }

    std::vector<layout::DisplayReport> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(reports_, {});
    }

    bool contains(const layout::DisplayReport& report) {
        const std::lock_guard lock(mutex_);
        return std::find(reports_.begin(), reports_.end(), report) != reports_.end();
    }

    /// Whether there is a report of this display.
    bool knows(DisplayID display) {
        const std::lock_guard lock(mutex_);
        return std::any_of(reports_.begin(), reports_.end(),
                           [=](const auto& report) { return report.display == display; });
    }

private:
    std::mutex mutex_;
    std::vector<layout::DisplayReport> reports_;
};

}  // namespace tavrel
