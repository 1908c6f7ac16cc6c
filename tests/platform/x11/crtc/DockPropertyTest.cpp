#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "platform/x11/crtc/LayoutSwitch.h"
#include "tests/platform/x11/crtc/SimulatedRandr.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"
#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::x11 {
namespace {

/// A dock with fewer CRTCs than outputs, each of which only some outputs can use; monitors are
/// plugged in and unplugged while they are on, and another program switches some off.
class DockPropertyTest : public testing::TestWithParam<std::uint64_t> {
protected:
    /// From 0 to `most`.
    int upTo(int most) { return std::uniform_int_distribution<>(0, most)(generator); }
    bool oneIn(int many) { return upTo(many - 1) == 0; }

    Snapshot randomDock() {
        SnapshotBuilder dock;
        for (const char* name : {"A", "B", "C", "D", "E"}) {
            dock.output(name).modes({mode::fullHd, mode::small});
        }
        Snapshot snapshot = dock.build();
        snapshot.crtcs.resize(3);
        for (Output& output : snapshot.outputs) {
            output.crtcs.clear();
            for (const Crtc& crtc : snapshot.crtcs) {
                if (oneIn(2)) {
                    output.crtcs.push_back(crtc.id);
                }
            }
            if (output.crtcs.empty()) {
                output.crtcs = {snapshot.crtcs.front().id};
            }
        }
        snapshot.screen = {64, 64, 16, 16};
        return snapshot;
    }

    /// Where each connected monitor but `without` shows something, and in which mode.
    static std::vector<std::string> seen(const Snapshot& snapshot, const std::string& without) {
        std::vector<std::string> shown;
        for (const Output& output : snapshot.outputs) {
            const Crtc* crtc = snapshot.activeCrtc(output);
            if (output.connected && crtc != nullptr && output.name != without) {
                shown.push_back(output.name + " " + std::to_string(crtc->mode) + " " +
                                std::to_string(crtc->area.x) + " " + std::to_string(crtc->area.y));
            }
        }
        return shown;
    }

    /// Whether there is a CRTC for each of `outputs`, from the one at `index` on; found by trying
    /// all.
    static bool canAllBeDriven(const std::vector<Output>& outputs, std::size_t index = 0,
                               const std::vector<Xid>& taken = {}) {
        if (index == outputs.size()) {
            return true;
        }
        const std::vector<Xid>& crtcs = outputs[index].crtcs;
        return std::any_of(crtcs.begin(), crtcs.end(), [&](Xid crtc) {
            std::vector<Xid> more = taken;
            more.push_back(crtc);
            return std::find(taken.begin(), taken.end(), crtc) == taken.end() &&
                   canAllBeDriven(outputs, index + 1, more);
        });
    }

    static bool canComeOn(const Snapshot& snapshot, const std::string& name) {
        std::vector<Output> outputs{outputNamed(snapshot, name)};
        for (const Output& output : snapshot.outputs) {
            if (output.connected && snapshot.activeCrtc(output) != nullptr) {
                outputs.push_back(output);
            }
        }
        return canAllBeDriven(outputs);
    }

    Output& anyOutput() {
        return server.state.outputs.at(
            static_cast<std::size_t>(upTo(static_cast<int>(server.state.outputs.size()) - 1)));
    }

    void otherProgramSwitchesOff(const Output& output) {
        if (output.crtc != 0) {
            server.grab();
            server.setCrtc({.crtc = output.crtc}, server.state.configTimestamp);
            server.ungrab();
        }
    }

    std::mt19937_64 generator{GetParam()};
    SimulatedRandr server{randomDock()};
    SimulatedUserDefaults store;
    layout::RememberedOutputs remembered{store};
    layout::LastSeen lastSeen;
};

TEST_P(DockPropertyTest, WhoIsSeenStaysAndWhoeverCanComeOnDoes) {
    int switchedOn = 0;
    int rescues = 0;
    for (int step = 0; step < 300; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        Output& output = anyOutput();
        const int what = upTo(9);
        if (what < 3) {
            output.connected = !output.connected;
            continue;
        }
        if (what < 5) {
            otherProgramSwitchesOff(output);
            continue;
        }
        const std::string name = output.name;
        const bool connected = output.connected;
        const Snapshot before = server.state;
        const bool enable = what < 8;
        const bool wasOn = before.activeCrtc(output) != nullptr;

        const ServerStatus status =
            switchDisplay(server, remembered, lastSeen, displayNamed(server.state, name), enable);

        const Snapshot& after = server.state;
        const layout::Area bounds = boundsOfAll(after);
        EXPECT_LE(bounds.width, after.screen.width);
        EXPECT_LE(bounds.height, after.screen.height);
        EXPECT_EQ(seen(after, name), seen(before, name)) << "the others stay";
        if (!connected) {
            EXPECT_EQ(status, serverStatus::illegalArgument);
        } else if (enable && seen(before, "").empty()) {
            EXPECT_EQ(status, serverStatus::success);
            ++rescues;
        } else if (enable && !wasOn) {
            EXPECT_EQ(status == serverStatus::success, canComeOn(before, name));
        } else if (!enable && wasOn && seen(before, name).empty()) {
            EXPECT_EQ(status, serverStatus::cannotComplete) << "it is the last";
        }
        if (status != serverStatus::success) {
            EXPECT_EQ(after, before);
        } else {
            EXPECT_EQ(after.activeCrtc(outputNamed(after, name)) != nullptr, enable);
            switchedOn += enable && !wasOn ? 1 : 0;
        }
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(switchedOn, 10);
    EXPECT_GT(rescues, 5);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DockPropertyTest, testing::Range<std::uint64_t>(1, 21));

}  // namespace
}  // namespace tavrel::x11
