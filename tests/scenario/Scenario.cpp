#include "tests/scenario/Scenario.h"

#include <exception>
#include <sstream>

namespace tavrel::scenario {

namespace {

std::string failure(const Scenario& scenario, std::size_t step, const std::string& what,
                    Stage& stage) {
    std::ostringstream text;
    text << scenario.name << ", step " << step + 1 << " of " << scenario.steps.size() << ", "
         << scenario.steps[step].told << ": " << what;
    try {
        text << "\n  window: " << stage.window() << "\n  server: " << stage.server();
    } catch (const std::exception& blind) {
        text << "\n  and nothing can be seen: " << blind.what();
    }
    return text.str();
}

}  // namespace

std::optional<std::string> play(const Scenario& scenario, Stage& stage) {
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        const Step& step = scenario.steps[i];
        try {
            if (step.act) {
                step.act(stage);
            }
            if (step.holds && !stage.await([&] { return step.holds(stage); })) {
                return failure(scenario, i, "this did not happen in time", stage);
            }
        } catch (const std::exception& error) {
            return failure(scenario, i, error.what(), stage);
        }
    }
    return std::nullopt;
}

}  // namespace tavrel::scenario
