#pragma once

#include <sys/types.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/bench/Measures.h"
#include "tests/bench/OneDisplay.h"
#include "tests/scenario/Stage.h"
#include "tests/support/AccessibleWindow.h"

namespace tavrel::bench {

/// The application as it runs on a stage now.
struct Played {
    scenario::Stage& stage;
    std::function<const support::AccessibleWindow&()> window;
    std::function<pid_t()> process;
    /// As in the WAYLAND_DISPLAY variable.
    std::string displayName;
};

/// `stage` is a compositor's, and must outlive what is returned.
template <typename CompositorStage>
Played playedOn(CompositorStage& stage) {
    return {.stage = stage,
            .window = [&]() -> const support::AccessibleWindow& { return stage.accessible(); },
            .process = [&] { return stage.application().pid(); },
            .displayName = stage.desktop().displayName()};
}

/// The row of the display at that connector.
template <typename CompositorStage>
scenario::Display rowOf(const CompositorStage& stage, const std::string& connector) {
    const auto& outputs = stage.outputs();
    return static_cast<scenario::Display>(std::find(outputs.begin(), outputs.end(), connector) -
                                          outputs.begin());
}

/// Presses the switch of the display in this row, as assistive technology does: a compositor
/// takes no clicks from programs. Returns how many milliseconds it took from that until the
/// compositor says that the display is so.
double timePress(const Played& played, scenario::Display row, const OneDisplay& display, bool on);

/// Adds the rows about a start, about memory and about being idle; each names `where`.
void measureStay(const Played& played, const std::string& where, const Extent& extent,
                 Report& report);

/// A way to switch a display.
struct Way {
    std::string name;
    /// Returns how many milliseconds that took.
    std::function<double(bool on)> time;
    /// What the first of all ways is to be in comparison.
    Goal goal = {};
};

/// Lets all ways take turns, each off and on again, and adds rows of the first one beside each of
/// the others.
void compareWays(const std::string& where, const std::vector<Way>& ways, const Extent& extent,
                 Report& report);

}  // namespace tavrel::bench
