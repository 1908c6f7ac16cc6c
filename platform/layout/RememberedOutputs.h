#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"

namespace tavrel {
class UserDefaults;
}

namespace tavrel::layout {

/// Where a display stands on the desktop.
struct Standing {
    DisplayID display = 0;
    Area area = {};

    friend bool operator==(const Standing&, const Standing&) = default;
};

/// How a display was set up when it was switched off; all that it takes to bring it back
/// as it was.
struct RememberedOutput {
    DisplayID display = 0;
    Mode mode = {};
    Area area = {};
    Rotation rotation = rotate0;
    double scale = 1;
    /// The displays that showed (part of) the same picture.
    std::vector<DisplayID> mirrors = {};
    /// Whether it was primary, and if so, only in place of one that was off: see the example in
    /// LayoutPolicy.h.
    bool primary = false;
    bool primaryOnLoan = false;
    /// Where every display stood, this one and those that were off already included, with a
    /// window server that has the others close the gap; empty with one that leaves it open.
    std::vector<Standing> arrangement = {};
    /// A JSON object with what the window server knows beyond that, and reads itself. Its
    /// members must not be called like those above.
    std::string notes = "{}";

    friend bool operator==(const RememberedOutput&, const RememberedOutput&) = default;
};

/// Latest last; of each display at most one.
using Memory = std::vector<RememberedOutput>;

/// Null when nothing is remembered of the display.
const RememberedOutput* find(const Memory& memory, DisplayID display);
void forget(Memory& memory, DisplayID display);
/// Gives up the first of very many.
void keepLatest(Memory& memory);

/// The stored form, a JSON array. Persistent: do not change the meaning of a member.
std::string encodeMemory(const Memory& memory);

/// std::nullopt unless the bytes are, whole, what `encodeMemory` writes or version 0.1 wrote.
std::optional<Memory> decodeMemory(std::string_view bytes);

/// The key of the persistent store that holds the memory.
inline constexpr std::string_view rememberedOutputsKey = "TavrelRememberedOutputs";

/// Does to `now` what made `after` of `before`; what others have remembered or forgotten
/// meanwhile stays so.
Memory merged(Memory now, const Memory& before, const Memory& after);

/// The displays that were switched off here, as they were.
///
/// Kept in the persistent store and read from there each time, so that another run of the
/// application, or the watchdog, can bring them back; where the store cannot be written, kept
/// in memory. To be used by one thread at a time.
class RememberedOutputs {
public:
    explicit RememberedOutputs(UserDefaults& store);

    /// Empty where the store holds anything malformed.
    Memory all() const;

    /// What becomes of all there are.
    using Change = std::function<Memory(Memory)>;

    /// Replaces all there are by what `change` makes of them, while nobody else can. Of very
    /// many, the first are given up. `change` may be called more than once.
    void update(const Change& change);

private:
    UserDefaults& store_;
    /// Set while the store is behind because it could not be written.
    std::optional<Memory> unsaved_;
};

}  // namespace tavrel::layout
