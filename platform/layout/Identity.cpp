#include "platform/layout/Identity.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
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

using Edid = std::vector<std::uint8_t>;

constexpr std::size_t blockSize = 128;

bool isIntact(const Edid& bytes) {
    constexpr std::array<std::uint8_t, 8> header{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    return bytes.size() >= blockSize && std::equal(header.begin(), header.end(), bytes.begin()) &&
           std::accumulate(bytes.begin(), bytes.begin() + blockSize, 0U) % 256 == 0;
}

/// The maker's letters, A to Z, packed into five bits each. Empty when these are others.
std::string makerOf(std::uint32_t vendor) {
    constexpr std::uint32_t mask = 31;
    std::string letters;
    for (const unsigned shift : {10U, 5U, 0U}) {
        const std::uint32_t letter = vendor >> shift & mask;
        if (letter < 1 || letter > 26) {
            return {};
        }
        letters += static_cast<char>('A' + letter - 1);
    }
    return letters;
}

/// The text of the description that is a name: up to a line feed, without what can't be shown.
/// Empty when there is none.
std::string modelOf(const Edid& bytes) {
    constexpr std::size_t firstDescription = 54;
    constexpr std::size_t lastDescription = 108;
    constexpr std::size_t descriptionSize = 18;
    constexpr std::size_t textAt = 5;
    constexpr std::array<std::uint8_t, 4> nameHead{0, 0, 0, 0xFC};
    for (std::size_t at = firstDescription; at <= lastDescription; at += descriptionSize) {
        const auto description = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        if (!std::equal(nameHead.begin(), nameHead.end(), description)) {
            continue;
        }
        std::string text;
        for (std::size_t i = at + textAt; i < at + descriptionSize && bytes[i] != '\n'; ++i) {
            const bool isShown = bytes[i] >= ' ' && bytes[i] <= '~';
            text += isShown ? std::string(1, static_cast<char>(bytes[i])) : std::string();
        }
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }
    return {};
}

std::string hexadecimal(std::uint32_t number) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const unsigned shift : {12U, 8U, 4U, 0U}) {
        text += digits[number >> shift & 15U];
    }
    return text;
}

}  // namespace

std::string monitorName(const std::vector<std::uint8_t>& edid) {
    const EdidNumbers numbers = parseEdid(edid);
    if (numbers == EdidNumbers()) {
        return {};
    }
    const std::string maker = makerOf(numbers.vendor);
    const std::string named = modelOf(edid);
    const std::string model = named.empty() ? hexadecimal(numbers.product) : named;
    return maker.empty() ? model : maker + ' ' + model;
}

EdidNumbers parseEdid(const std::vector<std::uint8_t>& bytes) {
    if (!isIntact(bytes)) {
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

namespace {

/// One pass over the outputs, in which each gets its number.
class Roll {
public:
    Roll(const std::vector<Identity>& outputs, KnownMonitors known, const IdentityHash& hash)
        : outputs_(outputs), hash_(hash), result_{{}, std::move(known)} {
        result_.displays.resize(outputs.size());
        for (const Identity& output : outputs) {
            byIdentity_.emplace_back(toText(output), byIdentity_.size());
        }
        // The order decides who gives way when two collide, so it must not be the server's.
        std::sort(byIdentity_.begin(), byIdentity_.end());
    }

    /// Who an output is, by a ladder of rules. All outputs are put to one rule before any is put to
    /// the next, so nobody gets a number that fits another output better.
    ///
    /// 1. Known with this EDID at this connector: it has that number.
    /// 2. A panel without an EDID, and a monitor is known at its connector: it is that one.
    /// 3. Known at another connector, and no other here, nor any other known, is like it: it has
    ///    moved.
    /// 4. Any other without an EDID, with a monitor or not: a number made of its connector.
    /// 5. Met for the first time: a number made of its connector and its EDID; known from now on.
    Identification call() {
        forEachUnnumbered([this](std::size_t at) { recognize(at); });
        forEachUnnumbered([this](std::size_t at) { recognizeSilentPanel(at); });
        forEachUnnumbered([this](std::size_t at) { recognizeElsewhere(at); });
        forEachUnnumbered([this](std::size_t at) {
            if (!hasEdid(outputs_[at])) {
                result_.displays[at] = freeNumber(at);
            }
        });
        forEachUnnumbered([this](std::size_t at) {
            result_.displays[at] = freeNumber(at);
            result_.known.push_back({outputs_[at], result_.displays[at]});
        });
        return std::move(result_);
    }

private:
    template <typename Step>
    void forEachUnnumbered(const Step& step) {
        for (const auto& [text, at] : byIdentity_) {
            if (result_.displays[at] == 0) {
                step(at);
            }
        }
    }

    static bool hasEdid(const Identity& identity) { return identity.edid != EdidNumbers(); }

    /// Whether nothing but the connector can tell them apart.
    static bool areAlike(const Identity& a, const Identity& b) {
        return a.edid == b.edid &&
               isBuiltInConnector(a.connector) == isBuiltInConnector(b.connector);
    }

    void recognize(std::size_t at) {
        takeKnown(at, [&](const Identity& known) { return known == outputs_[at]; });
    }

    /// A panel whose EDID cannot be read any more. Only after all that say who they are: a name
    /// of a connector may come twice.
    void recognizeSilentPanel(std::size_t at) {
        const Identity& output = outputs_[at];
        if (!hasEdid(output) && isBuiltInConnector(output.connector)) {
            takeKnown(at,
                      [&](const Identity& known) { return known.connector == output.connector; });
        }
    }

    template <typename IsIt>
    void takeKnown(std::size_t at, const IsIt& isIt) {
        for (const KnownMonitor& each : result_.known) {
            if (isIt(each.identity) && !isTaken(each.display)) {
                result_.displays[at] = each.display;
                return;
            }
        }
    }

    void recognizeElsewhere(std::size_t at) {
        const Identity& output = outputs_[at];
        const auto isLikeIt = [&](const Identity& other) { return areAlike(other, output); };
        const auto isKnownLikeIt = [&](const KnownMonitor& each) {
            return isLikeIt(each.identity);
        };
        KnownMonitors& known = result_.known;
        if (hasEdid(output) && std::count_if(outputs_.begin(), outputs_.end(), isLikeIt) == 1 &&
            std::count_if(known.begin(), known.end(), isKnownLikeIt) == 1) {
            KnownMonitor& moved = *std::find_if(known.begin(), known.end(), isKnownLikeIt);
            moved.identity.connector = output.connector;
            result_.displays[at] = moved.display;
        }
    }

    DisplayID freeNumber(std::size_t at) const {
        DisplayID number = hash_(toText(outputs_[at]));
        while (number == 0 || isTaken(number) || isKnown(number)) {
            ++number;
        }
        return number;
    }

    bool isTaken(DisplayID number) const {
        return std::find(result_.displays.begin(), result_.displays.end(), number) !=
               result_.displays.end();
    }

    bool isKnown(DisplayID number) const {
        return std::any_of(result_.known.begin(), result_.known.end(),
                           [&](const KnownMonitor& each) { return each.display == number; });
    }

    const std::vector<Identity>& outputs_;
    const IdentityHash& hash_;
    std::vector<std::pair<std::string, std::size_t>> byIdentity_;
    Identification result_;
};

}  // namespace

Identification identify(const std::vector<Identity>& outputs, const KnownMonitors& known,
                        const IdentityHash& hash) {
    return Roll(outputs, known, hash).call();
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
