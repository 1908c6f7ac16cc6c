#include "tests/simulation/StoredModel.h"

#include <cstdint>
#include <limits>

#include <nlohmann/json.hpp>

namespace tavrel::simulation {

std::optional<StoredModel> readStored(const std::optional<std::string>& bytes) {
    if (!bytes.has_value()) {
        return std::nullopt;
    }
    const auto json = nlohmann::json::parse(*bytes, nullptr, false);
    if (!json.is_array()) {
        return std::nullopt;
    }
    StoredModel model;
    for (const auto& each : json) {
        constexpr auto largest = std::numeric_limits<DisplayID>::max();
        if (!each.is_object() || !each.contains("id") || !each["id"].is_number_unsigned() ||
            !each.contains("isBuiltIn") || !each["isBuiltIn"].is_boolean() ||
            !each.contains("lastSeenAt") || !each["lastSeenAt"].is_number()) {
            return std::nullopt;
        }
        if (each["id"].get<std::uint64_t>() > largest) {
            return std::nullopt;
        }
        model[each["id"].get<DisplayID>()] = each["lastSeenAt"].get<double>();
    }
    return model;
}

}  // namespace tavrel::simulation
