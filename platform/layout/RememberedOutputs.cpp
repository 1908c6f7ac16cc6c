#include "platform/layout/RememberedOutputs.h"

#include <cstddef>
#include <iterator>
#include <utility>

#include "platform/UserDefaults.h"

namespace tavrel::x11 {

namespace {
constexpr std::ptrdiff_t most = 64;
}

RememberedOutputs::RememberedOutputs(UserDefaults& store) : store_(store) {}

std::vector<RememberedOutput> RememberedOutputs::all() const {
    if (unsaved_.has_value()) {
        return *unsaved_;
    }
    const std::optional<std::string> bytes = store_.data(rememberedOutputsKey);
    return bytes.has_value() ? decodeRemembered(*bytes).value_or(std::vector<RememberedOutput>{})
                             : std::vector<RememberedOutput>{};
}

void RememberedOutputs::replace(std::vector<RememberedOutput> remembered) {
    if (std::ssize(remembered) > most) {
        remembered.erase(remembered.begin(), remembered.end() - most);
    }
    if (store_.setData(rememberedOutputsKey, encodeRemembered(remembered))) {
        unsaved_.reset();
    } else {
        unsaved_ = std::move(remembered);
    }
}

}  // namespace tavrel::x11
