#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace tavrel {

/// A Wayland server that speaks Plasma's protocols for outputs and shows nothing: for what a
/// real one doesn't do on demand. It runs on a thread of its own. From one thread.
class StandInPlasma {
public:
    struct Mode {
        std::int32_t width = 1920;
        std::int32_t height = 1080;
        std::int32_t refresh = 60'000;
    };
    struct Output {
        std::string name;
        /// The first is the preferred one.
        std::vector<Mode> modes = {Mode{}};
        std::string edid = {};
        std::int32_t x = 0;
        std::int32_t y = 0;
        bool isEnabled = true;
        std::size_t mode = 0;
        double scale = 1;
        std::int32_t transform = 0;
        /// 0 while it is off.
        std::uint32_t priority = 0;
    };
    /// What a monitor says of itself, as the protocol has it: a 27U by the maker ACM, with the
    /// numbers 1133, 6699 and 7.
    static constexpr const char* edidInBase64 =
        "AP///////wAEbSsaBwAAAAAAAQQAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA"
        "/AAyN1UKICAgICAgICAgAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA"
        "AAAAAAAAAAAAAAAAAGA=";
    /// How later versions of Plasma announce outputs, or the earlier ones.
    enum class Announcing { byGlobals, byRegistry };

    /// What becomes of a configuration that is applied.
    enum class Answer {
        apply,
        fail,
        /// Said to be applied, but nothing has changed.
        ignore,
        /// The connection ends; nothing has changed, or all has.
        dropBefore,
        dropAfter,
        /// There is no answer.
        nothing,
    };

    /// Outputs side by side, called DP-1, DP-2 and so on.
    explicit StandInPlasma(std::size_t outputs = 3, Announcing announcing = Announcing::byGlobals);
    ~StandInPlasma();
    StandInPlasma(const StandInPlasma&) = delete;
    StandInPlasma& operator=(const StandInPlasma&) = delete;

    /// As in the WAYLAND_DISPLAY variable: a path.
    const std::string& displayName() const;

    /// What becomes of the next configurations; those after them are applied.
    void answerNext(std::vector<Answer> answers);
    /// How many there were.
    std::size_t configurations();

    std::vector<Output> outputs();
    /// Empty but for its name when there is none.
    Output output(const std::string& name);
    /// A change by another program.
    void change(const std::string& name, const std::function<void(Output&)>& change);
    void plug(Output output);
    void unplug(const std::string& name);
    /// Ends every connection, as a hot plug may.
    void dropClients();
    /// The same, and a change that nobody hears of before.
    void dropClientsAndChange(const std::string& name, const std::function<void(Output&)>& change);

private:
    class Server;
    std::unique_ptr<Server> server_;
};

}  // namespace tavrel
