#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controller/DisplayController.h"

namespace tavrel {

/// One state of the controller that the window is designed for.
struct Situation {
    std::string name = {};
    std::vector<DisplayDevice> displays = {};
    std::string status = "Ready";
    std::optional<std::string> error = {};
    bool isRefreshing = false;
};

inline DisplayDevice builtInDisplay(bool isOn, DisplayID id = 1) {
    return {id, "MacBook Display", DisplayDevice::Kind::builtIn, isOn};
}

inline DisplayDevice externalDisplay(bool isOn, DisplayID id = 2,
                                     const std::string& name = "External Display") {
    return {id, name, DisplayDevice::Kind::external, isOn};
}

inline DisplayDevice busy(DisplayDevice display) {
    display.isBusy = true;
    return display;
}

inline void show(DisplayController& controller, const Situation& situation) {
    controller.setDisplays(situation.displays);
    controller.setIsRefreshing(situation.isRefreshing);
    controller.setErrorMessage(situation.error);
    controller.setStatusMessage(situation.status);
}

/// External displays that are all on, with the numbers from 1 to `count`.
inline std::vector<DisplayDevice> manyDisplays(DisplayID count) {
    std::vector<DisplayDevice> displays;
    for (DisplayID id = 1; id <= count; ++id) {
        displays.push_back(externalDisplay(true, id, "External Display " + std::to_string(id)));
    }
    return displays;
}

inline std::vector<Situation> designedSituations() {
    const std::string layoutError = "macOS couldn’t change the desktop display layout (error 1001)";
    return {
        {.name = "two-on",
         .displays = {builtInDisplay(true), externalDisplay(true)},
         .status = "Both displays are ready"},
        {.name = "one-off",
         .displays = {builtInDisplay(true), externalDisplay(false)},
         .status = "External Display is off"},
        {.name = "three-busy-refreshing",
         .displays = {builtInDisplay(true), busy(externalDisplay(true, 2, "External Display 1")),
                      externalDisplay(false, 3, "External Display 2")},
         .status = "Turning off External Display 1…",
         .isRefreshing = true},
        {.name = "error",
         .displays = {builtInDisplay(true), externalDisplay(false)},
         .status = "Couldn’t change External Display",
         .error = layoutError},
        {.name = "empty", .status = "Found 0 displays"},
        {.name = "empty-refreshing", .status = "Finding your displays…", .isRefreshing = true},
    };
}

/// Situations beyond the design that the window has to cope with.
inline std::vector<Situation> extremeSituations() {
    std::vector<DisplayDevice> many = manyDisplays(10);
    for (DisplayDevice& display : many) {
        display.isOn = display.displayID() % 3 != 0;
    }
    const std::string longText =
        "Couldn’t wake: External Display 1, External Display 2, External "
        "Display 3, External Display 4, External Display 5, External "
        "Display 6, External Display 7, External Display 8";
    return {
        {.name = "ten-displays", .displays = many, .status = "Found 10 displays"},
        {.name = "long-texts",
         .displays = {externalDisplay(true, 1, "A display with quite a long name: " + longText),
                      externalDisplay(false, 2), externalDisplay(false, 3)},
         .status = "Some displays couldn’t be woken",
         .error = longText},
    };
}

}  // namespace tavrel
