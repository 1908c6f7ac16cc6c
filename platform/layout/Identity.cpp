#include "platform/layout/Identity.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <string>
#include <vector>

namespace tavrel::x11 {

namespace {

/// What tells one monitor at one connector from all others.
std::string identity(const Output& output) {
    return output.name + '/' + std::to_string(output.edid.vendor) + '/' +
           std::to_string(output.edid.product) + '/' + std::to_string(output.edid.serial);
}

}  // namespace

std::uint32_t stableHash(std::string_view bytes) {
    std::uint32_t hash = 2166136261U;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    }
    return hash;
}

std::map<Xid, DisplayID> displayIdentifiers(const Snapshot& snapshot, const IdentifierHash& hash) {
    std::vector<std::pair<std::string, Xid>> byIdentity;
    byIdentity.reserve(snapshot.outputs.size());
    for (const Output& output : snapshot.outputs) {
        byIdentity.emplace_back(identity(output), output.id);
    }
    // The order decides who gives way when two collide, so it must not be the server's.
    std::sort(byIdentity.begin(), byIdentity.end());

    std::map<Xid, DisplayID> identifiers;
    std::set<DisplayID> taken{0};
    for (const auto& [key, output] : byIdentity) {
        DisplayID identifier = hash(key);
        while (!taken.insert(identifier).second) {
            ++identifier;
        }
        identifiers.emplace(output, identifier);
    }
    return identifiers;
}

const Output* connectedOutput(const Snapshot& snapshot, DisplayID display) {
    for (const auto& [output, identifier] : displayIdentifiers(snapshot)) {
        if (identifier == display) {
            const Output* found = snapshot.output(output);
            return found->connected ? found : nullptr;
        }
    }
    return nullptr;
}

bool isBuiltInConnector(std::string_view name) {
    constexpr std::array<std::string_view, 3> panels{"edp", "lvds", "dsi"};
    return std::any_of(panels.begin(), panels.end(), [name](std::string_view panel) {
        return name.size() >= panel.size() &&
               std::equal(panel.begin(), panel.end(), name.begin(),
                          [](char expected, char actual) {
                              return expected == std::tolower(static_cast<unsigned char>(actual));
                          }) &&
               (name.size() == panel.size() ||
                std::isalpha(static_cast<unsigned char>(name[panel.size()])) == 0);
    });
}

}  // namespace tavrel::x11
