#include "platform/layout/MonitorDirectory.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <utility>

#include "platform/JsonNesting.h"
#include "platform/UserDefaults.h"
#include "platform/layout/StrictReader.h"

namespace tavrel::layout {

namespace {

using Json = nlohmann::json;

constexpr std::ptrdiff_t mostMonitors = 256;

Json toJson(const KnownMonitor& monitor) {
    return {{"display", monitor.display},
            {"connector", monitor.identity.connector},
            {"vendor", monitor.identity.edid.vendor},
            {"product", monitor.identity.edid.product},
            {"serial", monitor.identity.edid.serial}};
}

KnownMonitor readMonitor(StrictReader& reader, const Json& record) {
    KnownMonitor monitor;
    reader.number(record, "display", monitor.display);
    reader.text(record, "connector", monitor.identity.connector);
    reader.number(record, "vendor", monitor.identity.edid.vendor);
    reader.number(record, "product", monitor.identity.edid.product);
    reader.number(record, "serial", monitor.identity.edid.serial);
    return monitor;
}

bool isKnownAs(DisplayID display, const KnownMonitors& monitors) {
    return std::any_of(monitors.begin(), monitors.end(),
                       [&](const KnownMonitor& each) { return each.display == display; });
}

KnownMonitors latest(KnownMonitors monitors) {
    if (std::ssize(monitors) > mostMonitors) {
        monitors.erase(monitors.begin(), monitors.end() - mostMonitors);
    }
    return monitors;
}

}  // namespace

std::string encodeMonitors(const KnownMonitors& monitors) {
    Json list = Json::array();
    for (const KnownMonitor& monitor : monitors) {
        list.push_back(toJson(monitor));
    }
    // A connector's name is the window server's word and may be anything.
    return list.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<KnownMonitors> decodeMonitors(std::string_view bytes) {
    if (isNestedTooDeep(bytes)) {
        return std::nullopt;
    }
    const Json list = Json::parse(bytes, nullptr, false);
    if (!list.is_array()) {
        return std::nullopt;
    }
    StrictReader reader;
    KnownMonitors monitors;
    for (const Json& record : list) {
        KnownMonitor monitor = readMonitor(reader, record);
        reader.check(monitor.display != 0 && !isKnownAs(monitor.display, monitors) &&
                     monitor.identity.edid != EdidNumbers());
        monitors.push_back(std::move(monitor));
    }
    return reader.isGood() ? std::optional(std::move(monitors)) : std::nullopt;
}

KnownMonitors MonitorDirectory::meet(const std::vector<Identity>& outputs) {
    const std::lock_guard lock(mutex_);
    if (identify(outputs, known_).known == known_) {
        return known_;
    }
    std::optional<KnownMonitors> met;
    store_.update(knownMonitorsKey, [&](const std::optional<std::string>& bytes) {
        const KnownMonitors stored = decodeMonitors(bytes.value_or("")).value_or(known_);
        met = latest(identify(outputs, stored).known);
        return met != stored ? std::optional(encodeMonitors(*met)) : std::nullopt;
    });
    // A store may refuse without asking for the change.
    known_ = met.has_value() ? *std::move(met) : latest(identify(outputs, known_).known);
    return known_;
}

KnownMonitors MonitorDirectory::all() {
    const std::lock_guard lock(mutex_);
    if (auto stored = decodeMonitors(store_.data(knownMonitorsKey).value_or(""))) {
        known_ = *std::move(stored);
    }
    return known_;
}

}  // namespace tavrel::layout
