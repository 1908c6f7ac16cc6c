#include "platform/LeftOffRecovery.h"

namespace tavrel {

std::unique_ptr<DisplayMoment> LeftOffRecovery::nowAfterProbing() {
    {
        const std::lock_guard lock(mutex_);
        if (!awaited_.has_value()) {
            awaited_ = leftOff_();
        }
        if (!awaited_->empty() && recover(*awaited_)) {
            awaited_->clear();
        }
    }
    return queries_.nowAfterProbing();
}

bool LeftOffRecovery::recover(const std::vector<DisplayID>& leftOff) {
    const auto moment = queries_.nowAfterProbing();
    if (!moment->isCurrent() || !moment->onlineDisplays()) {
        return false;
    }
    // Latest first, as the watchdog does: each finds its place as it was when it went off. One
    // that somebody else has switched on meanwhile is asked for too: it is forgotten by that.
    for (auto each = leftOff.rbegin(); each != leftOff.rend(); ++each) {
        if (moment->isOnline(*each)) {
            switch_.setDisplayEnabled(*each, true);
        }
    }
    return true;
}

}  // namespace tavrel
