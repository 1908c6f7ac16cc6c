#include "tests/scenario/Steps.h"
#include "tests/scenario/Stories.h"

namespace tavrel::scenario {

const std::vector<Scenario>& crashStories() {
    static const std::vector<Scenario> stories{
        {"ACrashBringsBackWhatTheUserHadSwitchedOff",
         3,
         {
             userFlips(first),
             windowShowsOff(first),
             userFlips(third),
             windowShowsOff(third),
             serverHasOff({first, third}),
             applicationCrashes(),
             serverIsAsAtFirst(),
             applicationStarts(),
             windowSays("Found 3 displays"),
             windowShowsOn(first),
             windowShowsOn(third),
         }},
        {"ACrashLeavesWhatAnotherProgramSwitchedOff",
         3,
         {
             windowSays("Found 3 displays"),
             otherProgramSwitchesOff({first}),
             userFlips(second),
             windowShowsOff(second),
             serverHasOff({first, second}),
             applicationCrashes(),
             serverHasOn({second, third}),
             serverHasOff({first}),
         }},
    };
    return stories;
}

}  // namespace tavrel::scenario
