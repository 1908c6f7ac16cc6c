#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "platform/layout/LayoutPolicy.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/x11/crtc/CrtcNotes.h"
#include "tests/fuzz/Require.h"
#include "tests/simulated/SimulatedUserDefaults.h"

/// What is made of any text that the store could hold in place of the remembered outputs, up
/// to the place where they would be shown again.
namespace tavrel::layout {
namespace {

using fuzz::require;

void checkFormat(std::string_view text, const std::optional<Memory>& memory) {
    const std::string spaced = std::string(text) + " \n";
    require(decodeMemory(spaced) == memory, "space behind it makes no difference");
    if (!memory.has_value()) {
        return;
    }
    const std::string written = encodeMemory(*memory);
    require(decodeMemory(written) == memory, "what is written is read back the same");
    require(!decodeMemory(written.substr(0, written.size() - 1)).has_value(),
            "a text that ends too early is refused");
}

void checkNotes(const Memory& memory) {
    for (const RememberedOutput& output : memory) {
        require(isRotation(output.rotation), "it can be turned like this");
        const auto notes = x11::decodeNotes(output.notes);
        require(!notes.has_value() || x11::decodeNotes(x11::encodeNotes(*notes)) == notes,
                "notes are read back as they were written");
    }
}

/// Two displays on, the one primary, and all that are remembered off.
Layout deskFor(const Memory& memory) {
    const Mode usual{.width = 1920, .height = 1080, .refreshMillihertz = 60'000};
    Layout desk{.primary = 1, .maxWidth = 16'384, .maxHeight = 16'384};
    desk.outputs.push_back({.display = 1,
                            .isConnected = true,
                            .modes = {usual},
                            .shown = Shown{.mode = usual, .area = {0, 0, 1920, 1080}}});
    desk.outputs.push_back({.display = 2,
                            .isConnected = true,
                            .modes = {usual},
                            .shown = Shown{.mode = usual, .area = {1920, 0, 1920, 1080}}});
    for (const RememberedOutput& output : memory) {
        if (desk.output(output.display) == nullptr) {
            desk.outputs.push_back(
                {.display = output.display, .isConnected = true, .modes = {usual, output.mode}});
        }
    }
    return desk;
}

void checkWaysBack(const Memory& memory) {
    const Layout desk = deskFor(memory);
    for (const Output& output : desk.outputs) {
        const RememberedOutput* was = find(memory, output.display);
        const auto ways = waysBack(desk, output.display, memory);
        require(!ways.empty(), "there is room, so there is a way");
        for (const WayBack& way : ways) {
            require(desk.hasRoomFor(way.shown.area), "it is shown where the desktop reaches");
            require(!way.isAsItWas || (was != nullptr && way.shown.area == was->area &&
                                       way.shown.mode == was->mode),
                    "as it was means as it was");
        }
        require(!regainsPrimary(desk, output.display, memory) || (was != nullptr && was->primary),
                "only who was primary becomes it again");
    }
}

void checkStore(std::string_view text, const Memory& memory) {
    SimulatedUserDefaults store;
    store.setData(rememberedOutputsKey, text);
    RememberedOutputs remembered(store);
    require(remembered.all() == memory, "what is malformed is no memory");

    remembered.update([](Memory all) { return all; });

    constexpr std::ptrdiff_t most = 64;
    const auto surplus = std::max<std::ptrdiff_t>(std::ssize(memory) - most, 0);
    require(remembered.all() == Memory(memory.begin() + surplus, memory.end()),
            "the latest are kept");
}

void check(std::string_view text) {
    const std::optional<Memory> memory = decodeMemory(text);
    checkFormat(text, memory);
    checkStore(text, memory.value_or(Memory{}));
    checkNotes(memory.value_or(Memory{}));
    checkWaysBack(memory.value_or(Memory{}));
}

}  // namespace
}  // namespace tavrel::layout

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tavrel::layout::check({reinterpret_cast<const char*>(data), size});
    return 0;
}
