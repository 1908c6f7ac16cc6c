#include "platform/layout/RememberedOutputs.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "platform/UserDefaults.h"

namespace tavrel::layout {

namespace {
constexpr std::ptrdiff_t most = 64;
}

const RememberedOutput* find(const Memory& memory, DisplayID display) {
    const auto found = std::find_if(memory.begin(), memory.end(),
                                    [&](const auto& each) { return each.display == display; });
    return found == memory.end() ? nullptr : &*found;
}

void forget(Memory& memory, DisplayID display) {
    std::erase_if(memory, [&](const auto& each) { return each.display == display; });
}

RememberedOutputs::RememberedOutputs(UserDefaults& store) : store_(store) {}

Memory RememberedOutputs::all() const {
    if (unsaved_.has_value()) {
        return *unsaved_;
    }
    const std::optional<std::string> bytes = store_.data(rememberedOutputsKey);
    return bytes.has_value() ? decodeMemory(*bytes).value_or(Memory{}) : Memory{};
}

void RememberedOutputs::replace(Memory memory) {
    if (std::ssize(memory) > most) {
        memory.erase(memory.begin(), memory.end() - most);
    }
    if (store_.setData(rememberedOutputsKey, encodeMemory(memory))) {
        unsaved_.reset();
    } else {
        unsaved_ = std::move(memory);
    }
}

}  // namespace tavrel::layout
