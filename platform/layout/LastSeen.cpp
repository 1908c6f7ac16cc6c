#include "platform/layout/LastSeen.h"

#include <utility>

#include "platform/layout/LayoutPolicy.h"
#include "platform/layout/WholeLayout.h"

namespace tavrel::layout {

void LastSeen::see(const Layout& layout, const Notes& notes) {
    if (isNothingShown(layout)) {
        return;
    }
    const std::lock_guard lock(mutex_);
    const Memory before = seen_;
    for (const Output& output : layout.outputs) {
        if (!output.isActive()) {
            continue;
        }
        RememberedOutput now = describeInWhole(layout, output.display, before);
        now.primaryOnLoan = now.primaryOnLoan && layout.keepsPrimaryOn;
        now.notes = notes(output);
        forget(seen_, output.display);
        seen_.push_back(std::move(now));
    }
    // The role has one owner, and what is off by now may have lost it: the example is in
    // LayoutPolicy.h.
    for (RememberedOutput& each : seen_) {
        const Output* output = layout.output(each.display);
        const bool isOn = output != nullptr && output->isActive();
        if (isOn || !layout.keepsPrimaryOn) {
            each.primary = layout.primary == each.display;
        }
    }
    keepLatest(seen_);
}

Memory LastSeen::completed(Memory memory, DisplayID display) const {
    const std::lock_guard lock(mutex_);
    const RememberedOutput* seen = find(seen_, display);
    if (seen != nullptr && find(memory, display) == nullptr) {
        memory.push_back(*seen);
    }
    return memory;
}

}  // namespace tavrel::layout
