#include <stdexcept>
#include <string>
#include <vector>

#include "tests/bench/Desk.h"
#include "tests/bench/LayoutWatch.h"
#include "tests/bench/Measures.h"
#include "tests/bench/SwitchClicks.h"
#include "tests/support/Keyboard.h"

/// From the hot key, and from the loss of every monitor by another program's doing, until the
/// first monitor is switched on again.
namespace tavrel::bench {
namespace {

namespace key = support::key;

constexpr std::chrono::milliseconds rest{1'500};

class Rescues {
public:
    double timeHotKey() {
        clicks_.press();
        clicks_.release();
        watch_.awaitSwitch(false);
        application_.watch.awaitRest(rest);
        for (const xcb_keysym_t each : {key::control, key::alt, key::super}) {
            keyboard_.press(each);
        }
        const Time begin = Clock::now();
        keyboard_.press('w');
        const Time end = watch_.awaitSwitch(true);
        for (const xcb_keysym_t each : {xcb_keysym_t{'w'}, key::super, key::alt, key::control}) {
            keyboard_.release(each);
        }
        awaitAllOn();
        return milliseconds(end - begin);
    }

    double timeLoss() {
        LayoutWatch losses(desk_.displayName());
        watch_.forget();
        desk_.desktop().otherClient().switchOff(
            std::vector<std::string>{"DUMMY0", "DUMMY1", "DUMMY2"});
        Time lost;
        for (int gone = 0; gone < 3; ++gone) {
            lost = losses.awaitSwitch(false);
        }
        const Time end = watch_.awaitSwitch(true);
        awaitAllOn();
        return milliseconds(end - lost);
    }

private:
    void awaitAllOn() {
        if (!support::waitUntil([&] { return desk_.desktop().monitorsOn() == 3; })) {
            throw std::runtime_error("the monitors do not come back");
        }
        application_.watch.awaitRest(rest);
    }

    Desk desk_;
    RunningApplication application_{desk_};
    SwitchClicks clicks_{desk_, application_};
    LayoutWatch watch_{desk_.displayName()};
    support::Keyboard keyboard_{desk_.displayName()};
};

}  // namespace

void measureRescue(const Extent& extent, Report& report) {
    Rescues rescues;
    std::vector<double> byHotKey;
    std::vector<double> afterLoss;
    for (int run = 0; run < extent.runs; ++run) {
        byHotKey.push_back(rescues.timeHotKey());
        afterLoss.push_back(rescues.timeLoss());
    }
    report.add({.what = "hot key to the first monitor on",
                .unit = "ms",
                .ours = byHotKey,
                .goal = {Goal::Of::value, 10}});
    report.add(
        {.what = "loss of all monitors to the first on, looked for after 350 ms or at a tick",
         .unit = "ms",
         .ours = afterLoss,
         .goal = {Goal::Of::value, 360}});
}

}  // namespace tavrel::bench
