#include "platform/layout/Identity.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/TemporaryFolder.h"

namespace tavrel::layout {
namespace {

constexpr EdidNumbers someone{.vendor = 1, .product = 2, .serial = 3};
constexpr EdidNumbers another{.vendor = 1, .product = 2, .serial = 4};

TEST(StableHashTest, GivesTheNumbersItAlwaysGave) {
    // Users' stores hold such numbers. These are FNV-1a's published ones.
    EXPECT_EQ(stableHash(""), 0x811c9dc5U);
    EXPECT_EQ(stableHash("a"), 0xe40c292cU);
    EXPECT_EQ(stableHash("foobar"), 0xbf9cf968U);
}

/// A machine with its connectors, who remembers whom it has met.
class Machine {
public:
    explicit Machine(std::vector<std::string> connectors, IdentityHash hash = stableHash)
        : hash_(std::move(hash)) {
        for (std::string& connector : connectors) {
            outputs_.push_back({std::move(connector), {}});
        }
    }

    Machine& plug(const EdidNumbers& monitor, const std::string& connector) {
        at(connector).edid = monitor;
        return *this;
    }
    Machine& unplug(const std::string& connector) { return plug({}, connector); }
    Machine& listBackwards() {
        std::reverse(outputs_.begin(), outputs_.end());
        return *this;
    }

    /// Looks at all connectors, and says who is at this one.
    DisplayID meet(const std::string& connector) {
        Identification now = identify(outputs_, known_, hash_);
        known_ = std::move(now.known);
        return now.displays.at(static_cast<std::size_t>(&at(connector) - outputs_.data()));
    }
    std::vector<DisplayID> meetAll() {
        Identification now = identify(outputs_, known_, hash_);
        known_ = std::move(now.known);
        return now.displays;
    }
    const KnownMonitors& known() const { return known_; }

private:
    Identity& at(const std::string& connector) {
        return *std::find_if(outputs_.begin(), outputs_.end(),
                             [&](const Identity& each) { return each.connector == connector; });
    }

    const IdentityHash hash_;
    std::vector<Identity> outputs_;
    KnownMonitors known_;
};

Machine dock() {
    return Machine({"eDP-1", "DP-1", "DP-2", "DP-3"});
}

TEST(IdentifyTest, AMonitorGetsTheNumberThatVersion01GaveIt) {
    // Users' stores hold these numbers.
    EXPECT_EQ(dock().plug(someone, "DP-1").meet("DP-1"), stableHash("DP-1/1/2/3"));
    EXPECT_EQ(dock().meet("DP-1"), stableHash("DP-1/0/0/0"));
}

TEST(IdentifyTest, AMonitorOnAnotherPortIsTheSameDisplay) {
    Machine machine = dock();
    const DisplayID first = machine.plug(someone, "DP-1").meet("DP-1");

    EXPECT_EQ(machine.unplug("DP-1").plug(someone, "DP-2").meet("DP-2"), first);
    EXPECT_EQ(machine.unplug("DP-2").plug(someone, "DP-3").meet("DP-3"), first);
    EXPECT_EQ(machine.unplug("DP-3").plug(someone, "DP-1").meet("DP-1"), first);
    EXPECT_THAT(machine.known(), testing::SizeIs(1));
}

TEST(IdentifyTest, AnotherMonitorOnTheSamePortIsAnotherDisplay) {
    Machine machine = dock();
    const DisplayID first = machine.plug(someone, "DP-1").meet("DP-1");

    const DisplayID second = machine.plug(another, "DP-1").meet("DP-1");

    EXPECT_NE(second, first);
    EXPECT_EQ(machine.plug(someone, "DP-2").meet("DP-2"), first);
    EXPECT_EQ(machine.meet("DP-1"), second);
}

TEST(IdentifyTest, TwoMonitorsThatChangePortsKeepTheirNumbers) {
    Machine machine = dock().plug(someone, "DP-1").plug(another, "DP-2");
    const DisplayID first = machine.meet("DP-1");
    const DisplayID second = machine.meet("DP-2");

    machine.plug(another, "DP-1").plug(someone, "DP-2");

    EXPECT_EQ(machine.meet("DP-1"), second);
    EXPECT_EQ(machine.meet("DP-2"), first);
}

TEST(IdentifyTest, TwinsAreToldByTheirPorts) {
    Machine machine = dock().plug(someone, "DP-1").plug(someone, "DP-2");

    EXPECT_EQ(machine.meet("DP-1"), stableHash("DP-1/1/2/3"));
    EXPECT_EQ(machine.meet("DP-2"), stableHash("DP-2/1/2/3"));
}

TEST(IdentifyTest, AMonitorKeepsItsNumberWhenItsTwinComesAndGoes) {
    Machine machine = dock().plug(someone, "DP-1");
    const DisplayID first = machine.meet("DP-1");

    const DisplayID twin = machine.plug(someone, "DP-2").meet("DP-2");
    EXPECT_NE(twin, first);
    EXPECT_EQ(machine.meet("DP-1"), first);

    EXPECT_EQ(machine.unplug("DP-1").meet("DP-2"), twin) << "the one that is left";
    EXPECT_EQ(machine.plug(someone, "DP-1").meet("DP-1"), first);
    EXPECT_EQ(machine.unplug("DP-2").meet("DP-1"), first) << "the other way round";
    EXPECT_EQ(machine.plug(someone, "DP-2").meet("DP-2"), twin);
}

TEST(IdentifyTest, AMonitorThatHasMovedKeepsItsNumberWhenItsTwinTakesItsOldPort) {
    Machine machine = dock().plug(someone, "DP-1");
    const DisplayID first = machine.meet("DP-1");
    ASSERT_EQ(machine.unplug("DP-1").plug(someone, "DP-2").meet("DP-2"), first);

    const DisplayID twin = machine.plug(someone, "DP-1").meet("DP-1");

    EXPECT_NE(twin, first);
    EXPECT_EQ(machine.meet("DP-2"), first);
}

TEST(IdentifyTest, OfTwinsNobodyGuessesWhichHasMoved) {
    Machine machine = dock().plug(someone, "DP-1").plug(someone, "DP-2");
    const DisplayID first = machine.meet("DP-1");
    const DisplayID second = machine.meet("DP-2");

    const DisplayID moved = machine.unplug("DP-2").plug(someone, "DP-3").meet("DP-3");

    EXPECT_EQ(machine.meet("DP-1"), first);
    EXPECT_NE(moved, second);
    EXPECT_EQ(machine.unplug("DP-3").plug(someone, "DP-2").meet("DP-2"), second);
}

TEST(IdentifyTest, WithoutAnEdidAMonitorIsItsConnector) {
    Machine machine = dock();
    const DisplayID unknown = machine.meet("DP-1");

    machine.plug(someone, "DP-2");

    EXPECT_EQ(machine.meet("DP-1"), unknown);
    EXPECT_NE(machine.meet("DP-3"), unknown);
    EXPECT_THAT(machine.known(), testing::SizeIs(1)) << "nothing to be kept of it";
}

TEST(IdentifyTest, APortIsItselfAgainWhenItsMonitorHasGone) {
    Machine machine = dock();
    const DisplayID empty = machine.meet("DP-1");
    const DisplayID monitor = machine.plug(someone, "DP-1").meet("DP-1");

    EXPECT_NE(monitor, empty);
    EXPECT_EQ(machine.unplug("DP-1").meet("DP-1"), empty);
}

TEST(IdentifyTest, APanelWhoseEdidCannotBeReadIsStillThatPanel) {
    Machine machine = dock().plug(someone, "eDP-1");
    const DisplayID panel = machine.meet("eDP-1");

    EXPECT_EQ(machine.unplug("eDP-1").meet("eDP-1"), panel);
}

TEST(IdentifyTest, APanelThatSaysNothingTakesNoNumberOfOneThatDoesAtAConnectorOfTheSameName) {
    const std::vector<Identity> outputs{{"eDP-1", {}}, {"eDP-1", someone}};
    const Identification first = identify(outputs, {});

    EXPECT_EQ(identify(outputs, first.known).displays, first.displays);
}

TEST(IdentifyTest, APanelIsTheSameWhateverADriverCallsItsConnector) {
    Machine machine({"eDP-1", "eDP-1-1"});
    const DisplayID panel = machine.plug(someone, "eDP-1").meet("eDP-1");

    EXPECT_EQ(machine.unplug("eDP-1").plug(someone, "eDP-1-1").meet("eDP-1-1"), panel);
}

TEST(IdentifyTest, APanelIsNoMonitorThoughBothHaveTheSameNumbers) {
    Machine machine = dock().plug(someone, "eDP-1");
    const DisplayID panel = machine.meet("eDP-1");

    const DisplayID monitor = machine.unplug("eDP-1").plug(someone, "DP-1").meet("DP-1");

    EXPECT_NE(monitor, panel);
    EXPECT_EQ(machine.unplug("DP-1").plug(someone, "DP-2").meet("DP-2"), monitor)
        << "there is no other monitor like it";
}

TEST(IdentifyTest, CollisionsAreResolvedTheSameWayInWhateverOrderTheyAreListed) {
    const auto alike = [](std::string_view) { return 7U; };
    const Machine machine =
        Machine({"A", "B", "C", "D"}, alike).plug(another, "A").plug(someone, "D");

    for (Machine each : {machine, Machine(machine).listBackwards()}) {
        EXPECT_EQ(each.meet("B"), 7U);
        EXPECT_EQ(each.meet("C"), 8U);
        EXPECT_EQ(each.meet("A"), 9U);
        EXPECT_EQ(each.meet("D"), 10U);
    }
}

TEST(IdentifyTest, WhoCollidesKeepsTheNumberWhenTheOtherHasGone) {
    const auto alike = [](std::string_view) { return 7U; };
    Machine machine = Machine({"A", "B", "C"}, alike).plug(someone, "A").plug(another, "B");
    const DisplayID second = machine.meet("B");

    EXPECT_EQ(machine.unplug("A").meet("B"), second);
}

TEST(IdentifyTest, NobodyGetsTheNumberOfAKnownMonitorThatIsAway) {
    const auto alike = [](std::string_view) { return 7U; };
    const KnownMonitors known{{{"DP-1", someone}, 7}};

    EXPECT_EQ(identify({{"DP-2", {}}}, known, alike).displays, std::vector<DisplayID>{8});
}

TEST(IdentifyTest, NoNumberIsZero) {
    const std::vector<std::string> names{"A", "B", "C"};
    const auto zero = [](std::string_view) { return 0U; };
    const auto last = [](std::string_view) { return 0xFFFFFFFFU; };

    EXPECT_THAT(Machine(names, zero).meetAll(), testing::ElementsAre(1U, 2U, 3U));
    EXPECT_THAT(Machine(names, last).meetAll(), testing::ElementsAre(0xFFFFFFFFU, 1U, 2U));
}

TEST(BuiltInConnectorTest, PanelsAreWiredToTheMachine) {
    for (const char* name :
         {"eDP", "eDP-1", "eDP1", "edp-1", "eDP-1-1", "LVDS", "LVDS-1", "LVDS1", "DSI-1", "DSI1"}) {
        EXPECT_TRUE(isBuiltInConnector(name)) << name;
    }
}

/// As in a Turkish session, where the small letter of I is another one.
class TurkishLocale {
public:
    TurkishLocale() {
        const std::string locale = (folder_.path() / "tr_TR.ISO8859-9").string();
#ifndef __APPLE__
        EXPECT_EQ(std::system(("localedef -i tr_TR -f ISO-8859-9 " + locale).c_str()), 0);
        ::setenv("LOCPATH", folder_.path().c_str(), 1);
#endif
        EXPECT_NE(std::setlocale(LC_ALL, "tr_TR.ISO8859-9"), nullptr);
    }
    ~TurkishLocale() {
        std::setlocale(LC_ALL, before_.c_str());
        ::unsetenv("LOCPATH");
    }
    TurkishLocale(const TurkishLocale&) = delete;
    TurkishLocale& operator=(const TurkishLocale&) = delete;

private:
    const std::string before_ = std::setlocale(LC_ALL, nullptr);
    const support::TemporaryFolder folder_;
};

TEST(BuiltInConnectorTest, PanelsAreWiredToTheMachineInEveryLanguage) {
    const TurkishLocale locale;
    ASSERT_NE(std::tolower('I'), 'i') << "or this would show nothing";

    EXPECT_TRUE(isBuiltInConnector("DSI-1"));
    EXPECT_TRUE(isBuiltInConnector("LVDS\xFD")) << "a letter there, but none of ASCII";
    EXPECT_FALSE(isBuiltInConnector("LVDSI"));
}

TEST(BuiltInConnectorTest, EverythingElseIsNot) {
    for (const char* name : {"", "DP-1", "HDMI-1", "DVI-I-1", "VGA-1", "DUMMY0", "e", "eD",
                             "DP-eDP", "LVDSX-1", "DSIA", "DSIZ", "dsia", "dsiz", "Virtual-1"}) {
        EXPECT_FALSE(isBuiltInConnector(name)) << name;
    }
}

}  // namespace
}  // namespace tavrel::layout
