#include "platform/layout/RememberedOutputs.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "platform/UserDefaults.h"

namespace tavrel::layout {

namespace {

Memory decodedOrNone(const std::optional<std::string>& bytes) {
    return bytes.has_value() ? decodeMemory(*bytes).value_or(Memory{}) : Memory{};
}

}  // namespace

const RememberedOutput* find(const Memory& memory, DisplayID display) {
    const auto found = std::find_if(memory.begin(), memory.end(),
                                    [&](const auto& each) { return each.display == display; });
    return found == memory.end() ? nullptr : &*found;
}

void forget(Memory& memory, DisplayID display) {
    std::erase_if(memory, [&](const auto& each) { return each.display == display; });
}

void keepLatest(Memory& memory) {
    // Far more than anybody's monitors; only a server that invents names has more.
    constexpr std::ptrdiff_t most = 64;
    if (std::ssize(memory) > most) {
        memory.erase(memory.begin(), memory.end() - most);
    }
}

Memory merged(Memory now, const Memory& before, const Memory& after) {
    for (const RememberedOutput& each : before) {
        if (find(after, each.display) == nullptr) {
            forget(now, each.display);
        }
    }
    for (const RememberedOutput& each : after) {
        const RememberedOutput* was = find(before, each.display);
        if (was == nullptr || *was != each) {
            forget(now, each.display);
            now.push_back(each);
        }
    }
    return now;
}

RememberedOutputs::RememberedOutputs(UserDefaults& store) : store_(store) {}

Memory RememberedOutputs::all() const {
    if (unsaved_.has_value()) {
        return *unsaved_;
    }
    return decodedOrNone(store_.data(rememberedOutputsKey));
}

void RememberedOutputs::update(const Change& change) {
    std::optional<Memory> changed;
    const auto changeBytes = [&](const std::optional<std::string>& bytes) {
        changed = change(unsaved_.has_value() ? *unsaved_ : decodedOrNone(bytes));
        keepLatest(*changed);
        return std::optional(encodeMemory(*changed));
    };
    if (store_.update(rememberedOutputsKey, changeBytes)) {
        unsaved_.reset();
        return;
    }
    // A store may refuse without asking for the change.
    unsaved_ = changed.has_value() ? std::move(changed) : change(all());
}

}  // namespace tavrel::layout
