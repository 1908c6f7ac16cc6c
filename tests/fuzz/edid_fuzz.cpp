#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/layout/Identity.h"
#include "tests/fuzz/Require.h"

/// What is made of any bytes a monitor could call its EDID, and of the names and numbers of
/// any outputs there could be.
///
/// The first byte says whether header and sum of the EDID are mended, so that the fuzzer gets
/// past them, and how many outputs there are. Then come the EDID, and a name for each output.
namespace tavrel::layout {
namespace {

using fuzz::require;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t edidBlockSize = 128;
constexpr std::uint8_t header[] = {0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};

void mend(Bytes& edid) {
    edid.resize(std::max(edid.size(), edidBlockSize));
    std::copy(std::begin(header), std::end(header), edid.begin());
    const unsigned sum = std::accumulate(edid.begin(), edid.begin() + edidBlockSize - 1, 0U);
    edid[edidBlockSize - 1] = static_cast<std::uint8_t>(256 - sum % 256);
}

bool isEdid(const Bytes& bytes) {
    return bytes.size() >= edidBlockSize &&
           std::equal(std::begin(header), std::end(header), bytes.begin()) &&
           std::accumulate(bytes.begin(), bytes.begin() + edidBlockSize, 0U) % 256 == 0;
}

void checkEdid(const Bytes& edid) {
    const EdidNumbers numbers = parseEdid(edid);
    if (!isEdid(edid)) {
        require(numbers == EdidNumbers(), "what is no EDID says nothing");
        return;
    }
    require(numbers.vendor == edid[8] * 256U + edid[9], "the vendor comes high byte first");
    require(numbers.product == edid[10] + edid[11] * 256U, "the product comes low byte first");
    require(numbers.serial == edid[12] + edid[13] * 256U + edid[14] * 65536U + edid[15] * 16777216U,
            "the serial number comes low byte first");

    const Bytes firstBlock(edid.begin(), edid.begin() + edidBlockSize);
    Bytes twoBlocks = firstBlock;
    twoBlocks.insert(twoBlocks.end(), firstBlock.rbegin(), firstBlock.rend());
    require(parseEdid(twoBlocks) == numbers, "further blocks make no difference");
    for (std::size_t byte = 0; byte < edidBlockSize; ++byte) {
        Bytes damaged = firstBlock;
        damaged[byte] ^= 0x20;
        require(parseEdid(damaged) == EdidNumbers(), "one damaged byte and nothing is believed");
    }
}

/// Whether the numbers are there, and none is given twice. Returns them.
std::vector<DisplayID> numbersOf(const std::vector<Identity>& outputs, const KnownMonitors& known,
                                 const IdentityHash& hash) {
    std::vector<DisplayID> displays = identify(outputs, known, hash).displays;
    require(displays.size() == outputs.size(), "each output has a number");
    const std::set<DisplayID> all(displays.begin(), displays.end());
    require(all.size() == outputs.size() && !all.contains(0), "no two are alike, and none is 0");
    return displays;
}

void checkNumbers(const std::vector<Identity>& outputs, const IdentityHash& hash) {
    const std::vector<DisplayID> displays = numbersOf(outputs, {}, hash);
    const KnownMonitors known = identify(outputs, {}, hash).known;
    require(numbersOf(outputs, known, hash) == displays, "who is met again keeps the number");
    require(identify(outputs, known, hash).known == known, "there is nothing new about them");

    const std::vector<Identity> backwards(outputs.rbegin(), outputs.rend());
    const std::vector<DisplayID> reversed = numbersOf(backwards, {}, hash);
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        // Two that cannot be told apart may change places.
        const bool isAlone = std::count(outputs.begin(), outputs.end(), outputs[i]) == 1;
        require(!isAlone || displays[i] == reversed[outputs.size() - 1 - i],
                "the order of the outputs makes no difference");
    }
    for (std::size_t unplugged = 0; unplugged < outputs.size(); ++unplugged) {
        std::vector<Identity> fewer = outputs;
        fewer[unplugged].edid = {};
        const std::vector<DisplayID> left = numbersOf(fewer, known, hash);
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            const bool isAlone = std::count(outputs.begin(), outputs.end(), outputs[i]) == 1;
            require(i == unplugged || !isAlone || outputs[i].edid == EdidNumbers() ||
                        displays[i] == left[i],
                    "a monitor keeps its number while another is unplugged");
        }
    }
}

void checkName(const std::string& name) {
    std::string shouted = name;
    for (char& character : shouted) {
        character = character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                         : character;
    }
    const bool isBuiltIn = isBuiltInConnector(name);
    require(isBuiltIn == isBuiltInConnector(shouted), "the case makes no difference");
    require(isBuiltIn == isBuiltInConnector(name + "-1"), "nor does a number behind the name");
    require(!isBuiltInConnector("x" + name), "the name of the wire comes first");
    if (isBuiltIn) {
        require(
            shouted.starts_with("EDP") || shouted.starts_with("LVDS") || shouted.starts_with("DSI"),
            "only such wires lead to a panel");
    }
}

void check(std::span<const std::uint8_t> input) {
    if (input.empty()) {
        return;
    }
    const bool isToBeMended = input.front() % 2 != 0;
    const std::size_t outputs = input.front() / 2 % 8;
    Bytes edid(input.begin() + 1, input.begin() + static_cast<std::ptrdiff_t>(
                                                      std::min(input.size(), edidBlockSize + 1)));
    std::string names(input.begin() + 1 + static_cast<std::ptrdiff_t>(edid.size()), input.end());
    if (isToBeMended) {
        mend(edid);
    }
    checkEdid(edid);

    std::vector<Identity> identities;
    for (std::size_t output = 0; output < outputs; ++output) {
        const std::string name = names.substr(0, names.find('\n'));
        names.erase(0, name.size() + 1);
        checkName(name);
        identities.push_back({name, output % 2 == 0 ? parseEdid(edid) : EdidNumbers()});
    }
    checkNumbers(identities, stableHash);
    // Numbers that collide time and again, the highest and the forbidden one among them.
    checkNumbers(identities,
                 [](std::string_view text) { return 0xFFFFFFFF + stableHash(text) % 3; });
}

}  // namespace
}  // namespace tavrel::layout

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tavrel::layout::check({data, size});
    return 0;
}
