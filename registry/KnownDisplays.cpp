#include "registry/KnownDisplays.h"

#include <utility>

#include "registry/DisplayRegistry.h"

namespace tavrel {

const std::vector<StoredDisplay>& KnownDisplays::read() {
    std::optional<std::string> text = userDefaults_.data(DisplayRegistry::storageKey);
    if (text != text_) {
        records_ = DisplayRegistry::decoded(text);
        text_ = std::move(text);
    }
    return records_;
}

}  // namespace tavrel
