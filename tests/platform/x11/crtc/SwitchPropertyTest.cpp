#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "platform/layout/LayoutPolicy.h"
#include "platform/x11/crtc/LayoutSwitch.h"
#include "platform/x11/snapshot/Snapshot.h"
#include "tests/platform/x11/crtc/SimulatedRandr.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"
#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::x11 {
namespace {

/// Random desks, random switches, now and then a refusal, and what must hold all the same.
class Chance {
public:
    explicit Chance(std::uint64_t seed) : generator_(seed) {}

    /// From 0 to `most`.
    int upTo(int most) { return std::uniform_int_distribution<>(0, most)(generator_); }
    bool oneIn(int many) { return upTo(many - 1) == 0; }

private:
    std::mt19937_64 generator_;
};

SnapshotBuilder randomDesk(Chance& chance) {
    SnapshotBuilder desk;
    const int outputs = 2 + chance.upTo(3);
    std::vector<std::string> names;
    for (int i = 0; i < outputs; ++i) {
        names.emplace_back(1, static_cast<char>('A' + i));
        desk.output(names.back());
        if (chance.oneIn(2)) {
            desk.rotatable();
        }
        if (chance.oneIn(4)) {
            desk.modes({mode::small, mode::huge, mode::fullHd});
        } else {
            desk.modes({mode::fullHd, mode::small, mode::huge});
        }
        if (chance.oneIn(8)) {
            desk.disconnected();
        }
    }
    desk.limits(chance.oneIn(3) ? 6000 : 32767, chance.oneIn(3) ? 2500 : 32767);
    return desk;
}

std::vector<Crtc> crtcsWithout(const Snapshot& snapshot, Xid crtc) {
    std::vector<Crtc> others;
    std::copy_if(snapshot.crtcs.begin(), snapshot.crtcs.end(), std::back_inserter(others),
                 [crtc](const Crtc& each) { return each.id != crtc; });
    return others;
}

void expectSound(const Snapshot& snapshot) {
    const layout::Area bounds = boundsOfAll(snapshot);
    EXPECT_LE(bounds.width, snapshot.screen.width);
    EXPECT_LE(bounds.height, snapshot.screen.height);
    EXPECT_LE(snapshot.screen.width, snapshot.maxWidth);
    EXPECT_LE(snapshot.screen.height, snapshot.maxHeight);
    EXPECT_GT(snapshot.screen.widthInMillimetres, 0);
    for (const Output& output : snapshot.outputs) {
        const Crtc* crtc = snapshot.crtc(output.crtc);
        if (crtc != nullptr) {
            EXPECT_EQ(std::count(crtc->outputs.begin(), crtc->outputs.end(), output.id), 1);
        }
    }
}

class SwitchPropertyTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(SwitchPropertyTest, EverySwitchKeepsTheRestAndEveryRefusalKeepsAll) {
    Chance chance(GetParam());
    SimulatedRandr server(randomDesk(chance).build());
    server.state.screen = {64, 64, 16, 16};
    SimulatedUserDefaults store;
    layout::RememberedOutputs remembered(store);
    layout::LastSeen lastSeen;
    int successes = 0;

    for (int step = 0; step < 200; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const Output output = server.state.outputs.at(static_cast<std::size_t>(
            chance.upTo(static_cast<int>(server.state.outputs.size()) - 1)));
        const DisplayID display = displayNamed(server.state, output.name);
        const bool enable = chance.oneIn(2);
        const bool refuses = chance.oneIn(5);
        server.firstRefusal = server.requests + 1 + chance.upTo(2);
        server.refusals = refuses ? 1 : 0;

        const Snapshot before = server.state;
        const auto memory = remembered.all();
        const ServerStatus status = switchDisplay(server, remembered, lastSeen, display, enable);
        const Snapshot& after = server.state;

        expectSound(after);
        EXPECT_EQ(server.requestsWithoutGrab, 0);
        EXPECT_FALSE(server.isGrabbed);
        const Output& now = *after.output(output.id);
        const bool isLast = !enable && before.activeCrtc(output) != nullptr &&
                            layout::isLastShown(layoutOf(before), display);
        EXPECT_FALSE(isLast && status == serverStatus::success) << "nothing is on any more";
        if (status != serverStatus::success) {
            EXPECT_EQ(status, output.connected ? serverStatus::cannotComplete
                                               : serverStatus::illegalArgument);
            EXPECT_EQ(after, before);
            EXPECT_EQ(remembered.all(), memory);
            continue;
        }
        ++successes;
        EXPECT_EQ(after.activeCrtc(now) != nullptr, enable);
        const Xid touched = enable ? now.crtc : output.crtc;
        EXPECT_EQ(crtcsWithout(after, touched), crtcsWithout(before, touched));
        const Output* primary = after.output(*after.primary);
        if (!enable && before.activeCrtc(*before.output(*before.primary)) != nullptr) {
            EXPECT_NE(after.activeCrtc(*primary), nullptr) << "the primary is one that is off";
        }
        if (!enable && after != before && !refuses) {
            // Straight back on, it is as if nothing had happened.
            server.refusals = 0;
            ASSERT_EQ(switchDisplay(server, remembered, lastSeen, display, true),
                      serverStatus::success);
            EXPECT_EQ(server.state, before);
            ASSERT_EQ(switchDisplay(server, remembered, lastSeen, display, false),
                      serverStatus::success);
        }
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(successes, 20);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SwitchPropertyTest, testing::Range<std::uint64_t>(1, 26));

}  // namespace
}  // namespace tavrel::x11
