#include "tests/scenario/Stories.h"

#include "tests/scenario/Steps.h"

namespace tavrel::scenario {

namespace {

constexpr const char* keepOne =
    "Keep at least one display enabled so you can turn the other one back on.";

}  // namespace

const std::vector<Scenario>& switchingStories() {
    static const std::vector<Scenario> stories{
        {"ThreeMonitorsAreListed",
         3,
         {
             windowLists({"External Display 1", "External Display 2", "External Display 3"}),
             windowSays("Found 3 displays"),
             windowShowsOn(first),
             windowShowsOn(second),
             windowShowsOn(third),
             serverHasOn({first, second, third}),
         }},
        {"OneOfTwoGoesOffAndTheOtherIsLocked",
         2,
         {
             windowLists({"External Display", "External Display"}),
             windowSays("Both displays are ready"),
             userFlips(first),
             windowSays("External Display is off"),
             serverHasOff({first}),
             windowShowsOff(first),
             windowShowsLocked(second),
             userFlips(first),
             windowSays("External Display is on"),
             windowShowsOn(second),
             serverIsAsAtFirst(),
         }},
        {"EachGoesOffAndComesBackExactlyAsItWas",
         3,
         {
             userFlips(first),
             windowSays("External Display 1 is off"),
             windowShowsOff(first),
             serverHasOff({first}),
             serverHasOn({second, third}),
             userFlips(first),
             windowSays("External Display 1 is on"),
             windowShowsOn(first),
             serverIsAsAtFirst(),
             userFlips(second),
             windowSays("External Display 2 is off"),
             serverHasOff({second}),
             serverHasOn({first, third}),
             userFlips(second),
             windowSays("External Display 2 is on"),
             serverIsAsAtFirst(),
             userFlips(third),
             windowSays("External Display 3 is off"),
             serverHasOff({third}),
             serverHasOn({first, second}),
             userFlips(third),
             windowSays("External Display 3 is on"),
             serverIsAsAtFirst(),
         }},
        {"RefreshShowsWhatAnotherProgramChanged",
         3,
         {
             windowSays("Found 3 displays"),
             otherProgramSwitchesOff({second}),
             serverHasOff({second}),
             userPressesRefresh(),
             windowShowsOff(second),
             windowShowsOn(first),
             windowShowsOn(third),
             otherProgramSwitchesOn({second}),
             userPressesRefresh(),
             windowShowsOn(second),
             serverHasOn({first, second, third}),
         }},
        {"TheLastOneCannotBeSwitchedOff",
         3,
         {
             userFlips(first),
             windowShowsOff(first),
             userFlips(third),
             windowShowsOff(third),
             windowSays("External Display 3 is off"),
             windowShowsLocked(second),
             userFlips(second),
             // After a refresh, the flip before it cannot have been merely slow.
             userPressesRefresh(),
             windowSays("Found 3 displays"),
             windowShowsLocked(second),
             serverHasOn({second}),
             serverHasOff({first, third}),
         }},
        {"TheLastOneIsRefusedWhenOthersWentOffUnnoticed",
         3,
         {
             windowSays("Found 3 displays"),
             otherProgramSwitchesOff({first, third}),
             serverHasOff({first, third}),
             userFlips(second),
             windowSays(keepOne),
             windowShowsOn(second),
             serverHasOn({second}),
             userPressesRefresh(),
             windowSays("Found 3 displays"),
             windowShowsLocked(second),
             windowShowsOff(first),
             windowShowsOff(third),
         }},
        {"WakeBringsBackAllAfterTwoWereOff",
         3,
         {
             userFlips(first),
             windowShowsOff(first),
             userFlips(second),
             windowShowsOff(second),
             serverHasOff({first, second}),
             userPressesWake(),
             windowSays("Both displays are on"),
             windowShowsOn(first),
             windowShowsOn(second),
             windowShowsOn(third),
             serverIsAsAtFirst(),
         }},
    };
    return stories;
}

const std::vector<Scenario>& listingStartStories() {
    static const std::vector<Scenario> stories{
        {"ADisplayThatIsOffIsStillListedAfterARestart",
         3,
         {
             userFlips(second),
             windowShowsOff(second),
             serverHasOff({second}),
             applicationIsKilled(),
             serverHasOff({second}),
             applicationStarts(),
             windowLists({"External Display 1", "External Display 2", "External Display 3"}),
             windowShowsOff(second),
             windowShowsOn(first),
             userFlips(second),
             windowSays("External Display 2 is on"),
             serverIsAsAtFirst(),
         }},
    };
    return stories;
}

const std::vector<Scenario>& recoveringStartStories() {
    static const std::vector<Scenario> stories{
        {"WhatWasLeftOffComesBackAtTheNextStart",
         3,
         {
             userFlips(second),
             windowShowsOff(second),
             serverHasOff({second}),
             applicationIsKilled(),
             serverHasOff({second}),
             applicationStarts(),
             windowLists({"External Display 1", "External Display 2", "External Display 3"}),
             windowShowsOn(first),
             windowShowsOn(second),
             serverIsAsAtFirst(),
         }},
    };
    return stories;
}

}  // namespace tavrel::scenario
