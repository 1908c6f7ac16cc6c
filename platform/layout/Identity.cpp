#include "platform/layout/Identity.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <set>
#include <utility>

namespace tavrel::layout {

namespace {

// As ASCII has it: connectors are called the same in every language, and the standard
// functions follow the user's, in which an I may have another small letter.
char toLower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool isLetter(char character) {
    return toLower(character) >= 'a' && toLower(character) <= 'z';
}

std::string toText(const Identity& identity) {
    return identity.connector + '/' + std::to_string(identity.edid.vendor) + '/' +
           std::to_string(identity.edid.product) + '/' + std::to_string(identity.edid.serial);
}

}  // namespace

EdidNumbers parseEdid(const std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t blockSize = 128;
    constexpr std::array<std::uint8_t, 8> header{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    if (bytes.size() < blockSize || !std::equal(header.begin(), header.end(), bytes.begin())) {
        return {};
    }
    const unsigned sum = std::accumulate(bytes.begin(), bytes.begin() + blockSize, 0U);
    if (sum % 256 != 0) {
        return {};
    }
    const auto byte = [&bytes](std::size_t at) { return std::uint32_t{bytes[at]}; };
    return {.vendor = byte(8) << 8 | byte(9),
            .product = byte(11) << 8 | byte(10),
            .serial = byte(15) << 24 | byte(14) << 16 | byte(13) << 8 | byte(12)};
}

std::uint32_t stableHash(std::string_view bytes) {
    std::uint32_t hash = 2166136261U;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    }
    return hash;
}

std::vector<DisplayID> displayIdentifiers(const std::vector<Identity>& outputs,
                                          const IdentityHash& hash) {
    std::vector<std::pair<std::string, std::size_t>> byIdentity;
    byIdentity.reserve(outputs.size());
    for (const Identity& output : outputs) {
        byIdentity.emplace_back(toText(output), byIdentity.size());
    }
    // The order decides who gives way when two collide, so it must not be the server's.
    std::sort(byIdentity.begin(), byIdentity.end());

    std::vector<DisplayID> identifiers(outputs.size());
    std::set<DisplayID> taken{0};
    for (const auto& [text, index] : byIdentity) {
        DisplayID identifier = hash(text);
        while (!taken.insert(identifier).second) {
            ++identifier;
        }
        identifiers[index] = identifier;
    }
    return identifiers;
}

bool isBuiltInConnector(std::string_view name) {
    constexpr std::array<std::string_view, 3> panels{"edp", "lvds", "dsi"};
    return std::any_of(panels.begin(), panels.end(), [name](std::string_view panel) {
        return name.size() >= panel.size() &&
               std::equal(panel.begin(), panel.end(), name.begin(),
                          [](char expected, char actual) { return expected == toLower(actual); }) &&
               (name.size() == panel.size() || !isLetter(name[panel.size()]));
    });
}

}  // namespace tavrel::layout
