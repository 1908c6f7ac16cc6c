#include "platform/layout/WholeLayoutSwitch.h"

#include <functional>
#include <vector>

#include "tests/platform/layout/Desk.h"
#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::layout {
namespace {

using Outcome = WholeLayoutServer::Outcome;
using testing::IsEmpty;
using testing::SizeIs;

/// A window server that shows what it is told to, unless a test says otherwise.
class SimulatedWholeLayoutServer final : public WholeLayoutServer {
public:
    Reading read() override {
        ++reads;
        beforeRead();
        return status == serverStatus::success ? Reading{.layout = desk} : Reading{status, {}};
    }
    Outcome apply(const WholeLayout& wanted) override {
        asked.push_back(wanted);
        const Outcome outcome = verdict(wanted);
        if (outcome == Outcome::applied) {
            carryOut(wanted);
        }
        return outcome;
    }
    void carryOut(const WholeLayout& wanted) {
        for (Output& output : desk.outputs) {
            output.shown = wanted.shown(output.display);
        }
        desk.primary = wanted.primary;
    }
    bool isOn(DisplayID display) const { return desk.output(display)->isActive(); }
    void showOff(DisplayID display) {
        for (Output& output : desk.outputs) {
            if (output.display == display) {
                output.shown.reset();
            }
        }
    }

    Layout desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0);
    ServerStatus status = serverStatus::success;
    std::function<Outcome(const WholeLayout&)> verdict = [](const auto&) {
        return Outcome::applied;
    };
    std::function<void()> beforeRead = [] {};
    int reads = 0;
    std::vector<WholeLayout> asked;
};

class WholeLayoutSwitchTest : public testing::Test {
protected:
    ServerStatus off(DisplayID display) {
        return switchDisplay(server, remembered, lastSeen, display, false);
    }
    ServerStatus on(DisplayID display) {
        return switchDisplay(server, remembered, lastSeen, display, true);
    }
    void answer(Outcome outcome) {
        server.verdict = [outcome](const auto&) { return outcome; };
    }

    SimulatedWholeLayoutServer server;
    SimulatedUserDefaults store;
    RememberedOutputs remembered{store};
    LastSeen lastSeen;
};

TEST_F(WholeLayoutSwitchTest, OneGoesOffAndComesBackAsItWas) {
    const Layout atFirst = server.desk;

    EXPECT_EQ(off(monitorA), serverStatus::success);
    EXPECT_FALSE(server.isOn(monitorA));
    EXPECT_THAT(remembered.all(), SizeIs(1));
    EXPECT_EQ(on(monitorA), serverStatus::success);

    EXPECT_EQ(wholeOf(server.desk), wholeOf(atFirst));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, WhatIsToBeRememberedIsStoredBeforeItGoesOff) {
    server.verdict = [this](const auto&) {
        EXPECT_THAT(remembered.all(), SizeIs(1));
        return Outcome::applied;
    };

    EXPECT_EQ(off(monitorB), serverStatus::success);

    EXPECT_THAT(server.asked, SizeIs(1));
}

TEST_F(WholeLayoutSwitchTest, TheLastOneStays) {
    ASSERT_EQ(off(monitorA), serverStatus::success);
    const Memory before = remembered.all();

    EXPECT_EQ(off(monitorB), serverStatus::cannotComplete);

    EXPECT_TRUE(server.isOn(monitorB));
    EXPECT_EQ(remembered.all(), before);
}

TEST_F(WholeLayoutSwitchTest, WhoIsNotThereIsNotFound) {
    server.desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).unplugged();

    EXPECT_EQ(on(monitorB), serverStatus::illegalArgument);
    EXPECT_EQ(on(monitorC), serverStatus::illegalArgument);

    EXPECT_THAT(server.asked, IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, WhatIsAsItShouldBeIsLeftAlone) {
    EXPECT_EQ(on(monitorA), serverStatus::success);

    EXPECT_THAT(server.asked, IsEmpty());
    EXPECT_EQ(store.writes(), 0U);
}

TEST_F(WholeLayoutSwitchTest, WhatAnotherProgramHasSwitchedOnIsForgotten) {
    const Layout atFirst = server.desk;
    ASSERT_EQ(off(monitorB), serverStatus::success);
    server.desk = atFirst;

    EXPECT_EQ(on(monitorB), serverStatus::success);

    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, WhatAnotherProgramHasSwitchedOffComesBackAsItWasLastSeen) {
    const Layout atFirst =
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0, small, rotate90);
    server.desk = atFirst;
    noteSeen(lastSeen, server.desk);
    server.showOff(monitorB);

    EXPECT_EQ(on(monitorB), serverStatus::success);

    EXPECT_EQ(wholeOf(server.desk), wholeOf(atFirst));
}

TEST_F(WholeLayoutSwitchTest, WhatItHasSeenItselfCountsAsSeen) {
    const Layout atFirst = server.desk =
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0, small, rotate90);
    ASSERT_EQ(on(monitorA), serverStatus::success);
    server.showOff(monitorB);

    EXPECT_EQ(on(monitorB), serverStatus::success);

    EXPECT_EQ(wholeOf(server.desk), wholeOf(atFirst));
}

TEST_F(WholeLayoutSwitchTest, ARefusalLeavesAllAsItWas) {
    answer(Outcome::refused);

    EXPECT_EQ(off(monitorB), serverStatus::cannotComplete);

    EXPECT_THAT(server.asked, SizeIs(1));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, SoDoesItWhatWasRememberedBefore) {
    ASSERT_EQ(off(monitorB), serverStatus::success);
    const Memory before = remembered.all();
    // Another program has switched it on, elsewhere.
    server.desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(0, 1080);
    answer(Outcome::refused);

    EXPECT_EQ(off(monitorB), serverStatus::cannotComplete);

    EXPECT_EQ(remembered.all(), before);
}

TEST_F(WholeLayoutSwitchTest, OneThatWillNotComeOnInOneWayIsTriedInTheNext) {
    ASSERT_EQ(off(monitorB), serverStatus::success);
    server.verdict = [](const WholeLayout& wanted) {
        return wanted.shown(monitorB)->mode == small ? Outcome::applied : Outcome::refused;
    };

    EXPECT_EQ(on(monitorB), serverStatus::success);

    EXPECT_EQ(server.desk.output(monitorB)->shown->mode, small);
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, OneThatComesOnInNoWayIsGivenUp) {
    ASSERT_EQ(off(monitorB), serverStatus::success);
    std::vector<Mode> many;
    many.reserve(100);
    for (int i = 0; i < 100; ++i) {
        many.push_back({.width = 1000 - i, .height = 800, .refreshMillihertz = 60000});
    }
    server.desk.outputs[1].modes = many;
    // Nothing is to be seen, so all that may help is tried.
    server.showOff(monitorA);
    server.asked.clear();
    answer(Outcome::refused);

    EXPECT_EQ(on(monitorB), serverStatus::cannotComplete);

    EXPECT_EQ(server.asked.size(), 64U);
    EXPECT_THAT(remembered.all(), SizeIs(1)) << "the way back is kept";
}

TEST_F(WholeLayoutSwitchTest, WhatHasChangedMeanwhileIsPlannedForAgain) {
    server.verdict = [this](const auto&) {
        if (server.asked.size() > 1) {
            return Outcome::applied;
        }
        server.desk =
            Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).monitor(monitorC).at(
                3840, 0);
        return Outcome::outdated;
    };

    EXPECT_EQ(off(monitorB), serverStatus::success);

    ASSERT_THAT(server.asked, SizeIs(2));
    EXPECT_TRUE(server.isOn(monitorC));
    EXPECT_EQ(server.desk.output(monitorC)->shown->area.x, 1920);
}

TEST_F(WholeLayoutSwitchTest, AfterAChangeOrALossTheBestWayIsTriedFirstAgain) {
    for (const Outcome interruption : {Outcome::outdated, Outcome::lost}) {
        answer(Outcome::applied);
        ASSERT_EQ(off(monitorB), serverStatus::success);
        server.asked.clear();
        server.verdict = [this, interruption](const auto&) {
            const std::size_t time = server.asked.size();
            return time == 1 ? Outcome::refused : time == 2 ? interruption : Outcome::applied;
        };

        EXPECT_EQ(on(monitorB), serverStatus::success);

        ASSERT_THAT(server.asked, SizeIs(3));
        EXPECT_EQ(server.asked[2], server.asked[0]);
    }
}

TEST_F(WholeLayoutSwitchTest, WhatIsAlwaysOutdatedIsGivenUp) {
    answer(Outcome::outdated);

    EXPECT_EQ(off(monitorB), serverStatus::cannotComplete);

    EXPECT_THAT(server.asked, SizeIs(5));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, WhatAnotherProgramHasUndoneIsDoneAgain) {
    const Layout all = server.desk;
    server.beforeRead = [this, all] {
        if (server.reads == 2) {
            server.desk = all;
        }
    };

    EXPECT_EQ(off(monitorB), serverStatus::success);

    EXPECT_THAT(server.asked, SizeIs(2));
    EXPECT_FALSE(server.isOn(monitorB));
    EXPECT_THAT(remembered.all(), SizeIs(1));
}

TEST_F(WholeLayoutSwitchTest, WhatIsUndoneEachTimeIsGivenUp) {
    const Layout all = server.desk;
    server.beforeRead = [this, all] { server.desk = all; };

    EXPECT_EQ(off(monitorB), serverStatus::cannotComplete);

    EXPECT_THAT(server.asked, SizeIs(5));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, WhatWasDoneThoughNobodyHeardOfItIsDone) {
    server.verdict = [this](const WholeLayout& wanted) {
        server.carryOut(wanted);
        return Outcome::lost;
    };

    EXPECT_EQ(off(monitorB), serverStatus::success);
    EXPECT_THAT(remembered.all(), SizeIs(1));
    EXPECT_EQ(on(monitorB), serverStatus::success);

    EXPECT_THAT(server.asked, SizeIs(2));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, AServerThatIsLostEachTimeIsGoneButNothingHasHappened) {
    answer(Outcome::lost);

    EXPECT_EQ(off(monitorB), serverStatus::notImplemented);

    EXPECT_THAT(server.asked, SizeIs(5));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, WhereNobodyKnowsWhatHasBecomeOfItTheWayBackIsKept) {
    server.verdict = [this](const auto&) {
        server.status = serverStatus::notImplemented;
        return Outcome::lost;
    };
    EXPECT_EQ(off(monitorB), serverStatus::notImplemented);
    EXPECT_THAT(remembered.all(), SizeIs(1));

    server.status = serverStatus::success;
    answer(Outcome::silent);
    EXPECT_EQ(off(monitorA), serverStatus::notImplemented);
    EXPECT_THAT(remembered.all(), SizeIs(2));
}

TEST_F(WholeLayoutSwitchTest, WhatNoProgramMayChangeIsNotOffered) {
    answer(Outcome::forbidden);

    EXPECT_EQ(off(monitorB), serverStatus::notImplemented);

    EXPECT_THAT(server.asked, SizeIs(1));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(WholeLayoutSwitchTest, AServerThatTellsNothingIsNotAskedForAnything) {
    for (const ServerStatus status : {serverStatus::notImplemented, serverStatus::cannotComplete}) {
        server.status = status;
        EXPECT_EQ(off(monitorB), status);
        EXPECT_EQ(on(monitorB), status);
    }
    EXPECT_THAT(server.asked, IsEmpty());
    EXPECT_EQ(store.writes(), 0U);
}

TEST_F(WholeLayoutSwitchTest, WhatAnotherProcessRemembersStays) {
    server.verdict = [this](const auto&) {
        RememberedOutputs(store).update([](Memory memory) {
            memory.push_back({.display = monitorC});
            return memory;
        });
        return Outcome::refused;
    };

    EXPECT_EQ(off(monitorB), serverStatus::cannotComplete);

    ASSERT_THAT(remembered.all(), SizeIs(1));
    EXPECT_EQ(remembered.all().front().display, monitorC);
}

}  // namespace
}  // namespace tavrel::layout
