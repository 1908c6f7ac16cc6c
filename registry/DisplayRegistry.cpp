#include "registry/DisplayRegistry.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <utility>

#include "registry/StoredDisplay.h"

namespace tavrel::DisplayRegistry {
namespace {

using Index = std::map<DisplayID, StoredDisplay>;

[[noreturn]] void stopForDuplicate(DisplayID id) {
    std::fprintf(stderr, "Duplicate values for key: '%u'\n", id);
    std::abort();
}

Index indexByID(const std::vector<StoredDisplay>& records) {
    Index index;
    for (const StoredDisplay& record : records) {
        if (!index.emplace(record.id, record).second) {
            stopForDuplicate(record.id);
        }
    }
    return index;
}

std::vector<StoredDisplay> recordsIn(const std::optional<std::string>& stored) {
    if (!stored) {
        return {};
    }
    return StoredFormat::decode(*stored).value_or(std::vector<StoredDisplay>{});
}

}  // namespace

std::vector<StoredDisplay> knownDisplays(UserDefaults& userDefaults) {
    return recordsIn(userDefaults.data(storageKey));
}

std::vector<StoredDisplay> merge(const std::vector<DisplayID>& online, UserDefaults& userDefaults,
                                 DisplayMoment& moment, WallClock& wallClock) {
    const WallTime now = wallClock.now();
    Index index = indexByID(knownDisplays(userDefaults));
    for (const DisplayID id : online) {
        index.insert_or_assign(id, StoredDisplay{id, moment.isBuiltIn(id), now});
    }

    const std::set<DisplayID> onlineIDs(online.begin(), online.end());
    std::vector<StoredDisplay> kept;
    for (const auto& [id, record] : index) {
        if (onlineIDs.contains(id) || now - record.lastSeenAt <= retentionSeconds) {
            kept.push_back(record);
        }
    }

    if (const auto text = StoredFormat::encode(kept)) {
        userDefaults.setData(storageKey, *text);
    }
    std::sort(kept.begin(), kept.end(), comesBefore);
    return kept;
}

bool comesBefore(const StoredDisplay& a, const StoredDisplay& b) {
    return a.isBuiltIn != b.isBuiltIn ? a.isBuiltIn : a.id < b.id;
}

}  // namespace tavrel::DisplayRegistry

namespace tavrel {

const std::vector<StoredDisplay>& KnownDisplays::read() {
    std::optional<std::string> text = userDefaults_.data(DisplayRegistry::storageKey);
    if (text != text_) {
        records_ = DisplayRegistry::recordsIn(text);
        text_ = std::move(text);
    }
    return records_;
}

}  // namespace tavrel
