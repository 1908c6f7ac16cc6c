#pragma once

#include <string>
#include <vector>

#include "tests/scenario/Scenario.h"

/// The steps that stories are made of.
namespace tavrel::scenario {

inline constexpr Display first = 0;
inline constexpr Display second = 1;
inline constexpr Display third = 2;

// ---- Actions.
Step userFlips(Display display);
Step userPressesRefresh();
Step userPressesWake();
Step userPressesHotKey();
Step userQuits();
Step applicationIsKilled();
Step applicationCrashes();
Step applicationStarts();
Step otherProgramSwitchesOff(std::vector<Display> displays);
Step otherProgramSwitchesOn(std::vector<Display> displays);

// ---- Expectations of the window.
Step windowLists(std::vector<std::string> names);
/// On, with a switch that may be used.
Step windowShowsOn(Display display);
/// Off, with a switch that may be used.
Step windowShowsOff(Display display);
/// On, with a switch that may not be used and a text that says why.
Step windowShowsLocked(Display display);
Step windowSays(std::string footer);

// ---- Expectations of the window server.
Step serverHasOn(std::vector<Display> displays);
Step serverHasOff(std::vector<Display> displays);
/// Every display is as it was, and where it was, when the story began.
Step serverIsAsAtFirst();

}  // namespace tavrel::scenario
