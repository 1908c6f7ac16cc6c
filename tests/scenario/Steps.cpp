#include "tests/scenario/Steps.h"

#include <algorithm>
#include <utility>

namespace tavrel::scenario {

namespace {

std::string list(const std::vector<Display>& displays) {
    std::string text;
    for (const Display display : displays) {
        text += (text.empty() ? "" : ", ") + std::to_string(display + 1);
    }
    return text;
}

Step act(std::string told, std::function<void(Stage&)> act) {
    return {std::move(told), std::move(act), nullptr};
}

Step expectation(std::string told, std::function<bool(Stage&)> holds) {
    return {std::move(told), nullptr, std::move(holds)};
}

Step rowIs(const std::string& how, Display display, std::function<bool(const Row&)> holds) {
    return expectation("the window shows display " + list({display}) + " " + how,
                       [display, holds = std::move(holds)](Stage& stage) {
                           const Window window = stage.window();
                           return display < window.rows.size() && !window.rows[display].isBusy &&
                                  holds(window.rows[display]);
                       });
}

Step serverHas(std::vector<Display> displays, bool on) {
    std::string told = "the server has " + list(displays) + (on ? " on" : " off");
    return expectation(std::move(told), [displays = std::move(displays), on](Stage& stage) {
        const std::vector<ServerDisplay> server = stage.server();
        return std::all_of(displays.begin(), displays.end(), [&](Display display) {
            return display < server.size() && server[display].isOn == on;
        });
    });
}

}  // namespace

Step userFlips(Display display) {
    return act("the user flips display " + list({display}),
               [display](Stage& stage) { stage.flip(display); });
}

Step userPressesRefresh() {
    return act("the user presses refresh", [](Stage& stage) { stage.pressRefresh(); });
}

Step userPressesWake() {
    return act("the user presses wake", [](Stage& stage) { stage.pressWake(); });
}

Step userPressesHotKey() {
    return act("the user presses the hot key", [](Stage& stage) { stage.pressHotKey(); });
}

Step userQuits() {
    return act("the user quits", [](Stage& stage) { stage.quitApplication(); });
}

Step applicationIsKilled() {
    return act("the application is killed", [](Stage& stage) { stage.killApplication(); });
}

Step applicationCrashes() {
    return act("the application crashes", [](Stage& stage) { stage.crashApplication(); });
}

Step applicationStarts() {
    return act("the application starts", [](Stage& stage) { stage.startApplication(); });
}

Step otherProgramSwitchesOff(std::vector<Display> displays) {
    std::string told = "another program switches off " + list(displays);
    return act(std::move(told), [displays = std::move(displays)](Stage& stage) {
        stage.switchElsewhere(displays, false);
    });
}

Step otherProgramSwitchesOn(std::vector<Display> displays) {
    std::string told = "another program switches on " + list(displays);
    return act(std::move(told), [displays = std::move(displays)](Stage& stage) {
        stage.switchElsewhere(displays, true);
    });
}

Step windowLists(std::vector<std::string> names) {
    std::string told = "the window lists " + std::to_string(names.size()) + " displays by name";
    return expectation(std::move(told), [names = std::move(names)](Stage& stage) {
        const Window window = stage.window();
        return std::equal(window.rows.begin(), window.rows.end(), names.begin(), names.end(),
                          [](const Row& row, const std::string& name) { return row.name == name; });
    });
}

Step windowShowsOn(Display display) {
    return rowIs("on", display, [](const Row& row) {
        return row.isOn && row.isSwitchEnabled && row.lockText.empty();
    });
}

Step windowShowsOff(Display display) {
    return rowIs("off", display, [](const Row& row) {
        return !row.isOn && row.isSwitchEnabled && row.lockText.empty();
    });
}

Step windowShowsLocked(Display display) {
    return rowIs("locked", display, [](const Row& row) {
        return row.isOn && !row.isSwitchEnabled && row.lockText == "Must stay on";
    });
}

Step windowSays(std::string footer) {
    std::string told = "the window says \"" + footer + "\"";
    return expectation(std::move(told), [footer = std::move(footer)](Stage& stage) {
        return stage.window().footer == footer;
    });
}

Step serverHasOn(std::vector<Display> displays) {
    return serverHas(std::move(displays), true);
}

Step serverHasOff(std::vector<Display> displays) {
    return serverHas(std::move(displays), false);
}

Step serverIsAsAtFirst() {
    return expectation("the server is as at first",
                       [](Stage& stage) { return stage.server() == stage.serverAtFirst(); });
}

}  // namespace tavrel::scenario
