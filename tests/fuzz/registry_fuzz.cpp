#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "registry/DisplayRegistry.h"
#include "registry/StoredDisplay.h"
#include "tests/fuzz/Require.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/SettableClock.h"

/// What the registry makes of any text that its store could hold.
namespace tavrel {
namespace {

using fuzz::require;
using Records = std::vector<StoredDisplay>;

/// Every even display is built in.
class EvenBuiltIn : public DisplayMoment {
public:
    std::optional<std::vector<DisplayID>> allDisplays() override { return std::nullopt; }
    std::optional<std::vector<DisplayID>> onlineDisplays() override { return std::nullopt; }
    bool isBuiltIn(DisplayID display) override { return display % 2 == 0; }
    bool isOnline(DisplayID) override { return false; }
    bool isActive(DisplayID) override { return false; }
    std::uint32_t vendorNumber(DisplayID) override { return 0; }
    std::uint32_t modelNumber(DisplayID) override { return 0; }
    std::uint32_t serialNumber(DisplayID) override { return 0; }
};

void checkFormat(std::string_view text, const std::optional<Records>& records) {
    const std::string spaced = std::string(text) + "\r\n";
    require(StoredFormat::decode(spaced) == records, "space behind it makes no difference");
    const std::string nested = "[" + std::string(text) + "]";
    require(!records.has_value() || !StoredFormat::decode(nested).has_value(),
            "a list of records in a list is none");
    if (!records.has_value()) {
        return;
    }
    const std::optional<std::string> written = StoredFormat::encode(*records);
    require(written.has_value(), "what was read can be written");
    require(StoredFormat::decode(*written) == records, "what is written is read back the same");
    require(!StoredFormat::decode(written->substr(0, written->size() - 1)).has_value(),
            "a text that ends too early is refused");
}

bool areAllDifferent(const Records& records) {
    std::set<DisplayID> ids;
    return std::ranges::all_of(records,
                               [&](const auto& record) { return ids.insert(record.id).second; });
}

void checkMerge(std::string_view text, const Records& records) {
    // The first of those remembered, and one that may be new.
    std::vector<DisplayID> online{7};
    if (!records.empty()) {
        online.push_back(records.front().id);
    }
    SettableClock clock;
    const WallTime now = clock.time;
    SimulatedUserDefaults store;
    store.setData(DisplayRegistry::storageKey, text);
    EvenBuiltIn moment;

    const Records merged = DisplayRegistry::merge(online, store, moment, clock);

    require(areAllDifferent(merged), "no display is listed twice");
    require(std::ranges::is_sorted(merged, DisplayRegistry::comesBefore), "they come in order");
    for (const DisplayID id : online) {
        require(std::ranges::count(merged, StoredDisplay{id, id % 2 == 0, now}) == 1,
                "who is online is listed, seen now");
    }
    for (const StoredDisplay& record : records) {
        const bool isOnline = std::ranges::count(online, record.id) > 0;
        const bool isYoung = now - record.lastSeenAt <= DisplayRegistry::retentionSeconds;
        require(isOnline || (std::ranges::count(merged, record) == 1) == isYoung,
                "who was seen within 30 days is listed, and only who was");
    }
    Records stored = DisplayRegistry::knownDisplays(store);
    std::ranges::sort(stored, DisplayRegistry::comesBefore);
    require(stored == merged, "what is listed is stored");
}

void check(std::string_view text) {
    const std::optional<Records> records = StoredFormat::decode(text);
    checkFormat(text, records);

    SimulatedUserDefaults store;
    store.setData(DisplayRegistry::storageKey, text);
    require(DisplayRegistry::knownDisplays(store) == records.value_or(Records{}),
            "what is malformed is an empty registry");
    // A list that names one twice is not ours, and ends the process.
    if (areAllDifferent(records.value_or(Records{}))) {
        checkMerge(text, records.value_or(Records{}));
    }
}

}  // namespace
}  // namespace tavrel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tavrel::check({reinterpret_cast<const char*>(data), size});
    return 0;
}
