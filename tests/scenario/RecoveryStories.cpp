#include "tests/scenario/Steps.h"
#include "tests/scenario/Stories.h"

namespace tavrel::scenario {

const std::vector<Scenario>& recoveryStories() {
    static const std::vector<Scenario> stories{
        {"AllSwitchedOffElsewhereComeBackByThemselves",
         3,
         {
             windowSays("Found 3 displays"),
             otherProgramSwitchesOff({first, second, third}),
             windowSays("Lost display recovered automatically"),
             serverHasOn({first, second, third}),
             windowShowsOn(first),
             windowShowsOn(second),
             windowShowsOn(third),
         }},
        {"TheLastOneSwitchedOffElsewhereBringsAllBack",
         3,
         {
             userFlips(first),
             windowShowsOff(first),
             userFlips(second),
             windowShowsOff(second),
             otherProgramSwitchesOff({third}),
             windowSays("Lost display recovered automatically"),
             serverHasOn({first, second, third}),
         }},
        {"OneSwitchedOffElsewhereIsLeftAloneWhileAnotherIsUsable",
         3,
         {
             windowSays("Found 3 displays"),
             otherProgramSwitchesOff({first, second}),
             // Two flips take longer than any check that could interfere.
             userPressesRefresh(),
             windowShowsOff(first),
             userFlips(first),
             windowSays("External Display 1 is on"),
             userFlips(first),
             windowSays("External Display 1 is off"),
             serverHasOff({first, second}),
         }},
        {"TheHotKeyWakesAll",
         3,
         {
             userFlips(first),
             windowShowsOff(first),
             userFlips(third),
             windowShowsOff(third),
             userPressesHotKey(),
             windowSays("Both displays are on"),
             windowShowsOn(first),
             windowShowsOn(third),
             serverIsAsAtFirst(),
         }},
        {"QuittingSwitchesEverythingOn",
         3,
         {
             userFlips(first),
             windowShowsOff(first),
             userFlips(second),
             windowShowsOff(second),
             userQuits(),
             serverIsAsAtFirst(),
             applicationStarts(),
             windowSays("Found 3 displays"),
             windowShowsOn(first),
         }},
    };
    return stories;
}

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
