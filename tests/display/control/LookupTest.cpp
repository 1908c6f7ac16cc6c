// Which entry points are found where. What has been looked up is kept for the life of a
// process, so each test looks in a new one.
#include <gmock/gmock.h>

#include "display/control/DisplayControl.h"
#include "tests/display/control/StandIns.h"
#include "tests/support/NewProcess.h"

namespace tavrel {
namespace {

using standIns::Names;
using standIns::Offer;
using standIns::state;
using support::inNewProcess;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string frameworkOpening =
    "/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight, 5";
const Names allFour{"CGSConfigureDisplayEnabled", "SLSConfigureDisplayEnabled", "SLSGetDisplayList",
                    "CGSGetDisplayList"};

class DisplayControlLookupTest : public testing::Test {
protected:
    /// `entryPoint` is a place and a name; none when empty.
    static void expectSwitchingBy(const std::string& entryPoint) {
        const bool isThere = !entryPoint.empty();
        state().calls.clear();

        EXPECT_EQ(resolveConfigureDisplayEnabled() != nullptr, isThere);
        EXPECT_EQ(DCTLCanControlDisplays(), isThere);
        EXPECT_THAT(state().calls, IsEmpty());

        EXPECT_EQ(DCTLSetDisplayEnabled(7, true), isThere ? 0 : 1006);
        EXPECT_EQ(state().calls, isThere ? Names({"begin(null)", entryPoint + "(transaction, 7, 1)",
                                                  "complete(transaction, 2)"})
                                         : Names());
    }

    static void expectListingBy(const std::string& entryPoint) {
        const bool isThere = !entryPoint.empty();
        state().calls.clear();
        state().displays = {11, 12};
        std::vector<std::uint32_t> displays{1, 2, 3};
        std::uint32_t count = 77;

        EXPECT_EQ(resolveGetDisplayList() != nullptr, isThere);
        EXPECT_EQ(DCTLGetDisplayList(3, displays.data(), &count), isThere ? 0 : 1006);
        EXPECT_EQ(state().calls, isThere ? Names({entryPoint + "(3, array, count)"}) : Names());
        EXPECT_EQ(count, isThere ? 2U : 77U);
        EXPECT_EQ(displays, isThere ? std::vector<std::uint32_t>({11, 12, 3})
                                    : std::vector<std::uint32_t>({1, 2, 3}));
    }
};

struct Situation {
    std::string name;
    Offer offer;
    /// The place and the name of what must be found; empty for what must not.
    std::string configure = {};
    std::string list = {};
    std::size_t openings;
};

void PrintTo(const Situation& situation, std::ostream* out) {
    *out << situation.name;
}

const Situation situations[] = {
    {.name = "NothingIsFoundWithoutEntryPointsAndFramework", .offer = {}, .openings = 1},
    {.name = "NothingIsFoundInAFrameworkWithoutEntryPoints",
     .offer = {.framework = Names()},
     .openings = 1},
    {.name = "ProcessIsPreferredAndTheFrameworkNotOpened",
     .offer = {.process = {"CGSConfigureDisplayEnabled", "SLSGetDisplayList"},
               .framework = allFour},
     .configure = "process CGSConfigureDisplayEnabled",
     .list = "process SLSGetDisplayList",
     .openings = 0},
    {.name = "ListInTheProcessIsFoundByItsOtherNameBeforeTheFramework",
     .offer = {.process = {"CGSConfigureDisplayEnabled", "CGSGetDisplayList"},
               .framework = allFour},
     .configure = "process CGSConfigureDisplayEnabled",
     .list = "process CGSGetDisplayList",
     .openings = 0},
    {.name = "PreferencesInTheProcessAreOpposite",
     .offer = {.process = allFour},
     .configure = "process CGSConfigureDisplayEnabled",
     .list = "process SLSGetDisplayList",
     .openings = 0},
    {.name = "PreferencesInTheFrameworkAreOpposite",
     .offer = {.framework = allFour},
     .configure = "framework CGSConfigureDisplayEnabled",
     .list = "framework SLSGetDisplayList",
     .openings = 1},
    {.name = "OtherNamesInTheFrameworkAreFound",
     .offer = {.framework = Names{"SLSConfigureDisplayEnabled", "CGSGetDisplayList"}},
     .configure = "framework SLSConfigureDisplayEnabled",
     .list = "framework CGSGetDisplayList",
     .openings = 1},
    {.name = "SLSConfigureInTheProcessIsNotFound",
     .offer = {.process = {"SLSConfigureDisplayEnabled", "SLSGetDisplayList"}},
     .list = "process SLSGetDisplayList",
     .openings = 1},
    {.name = "SLSConfigureInTheProcessIsPassedOverForCGSInTheFramework",
     .offer = {.process = {"SLSConfigureDisplayEnabled", "CGSGetDisplayList"},
               .framework = Names{"CGSConfigureDisplayEnabled"}},
     .configure = "framework CGSConfigureDisplayEnabled",
     .list = "process CGSGetDisplayList",
     .openings = 1},
    {.name = "SLSConfigureInTheProcessIsPassedOverForSLSInTheFramework",
     .offer = {.process = {"SLSConfigureDisplayEnabled"},
               .framework = Names{"SLSConfigureDisplayEnabled"}},
     .configure = "framework SLSConfigureDisplayEnabled",
     .openings = 1},
    {.name = "ConfigureInTheProcessLeavesTheListToTheFramework",
     .offer = {.process = {"CGSConfigureDisplayEnabled"}, .framework = Names{"SLSGetDisplayList"}},
     .configure = "process CGSConfigureDisplayEnabled",
     .list = "framework SLSGetDisplayList",
     .openings = 1},
};

class DisplayControlSituationTest : public DisplayControlLookupTest,
                                    public testing::WithParamInterface<Situation> {};

TEST_P(DisplayControlSituationTest, Holds) {
    inNewProcess([] {
        const Situation& situation = GetParam();
        const std::vector<std::string> openings(situation.openings, frameworkOpening);

        // What is offered counts at the first use only.
        for (const Offer& offer : {situation.offer, Offer{}, Offer{allFour, allFour}}) {
            state().offer = offer;
            expectSwitchingBy(situation.configure);
            expectListingBy(situation.list);
            EXPECT_EQ(state().openings, openings);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Lookup, DisplayControlSituationTest, testing::ValuesIn(situations),
                         [](const auto& each) { return each.param.name; });

TEST_F(DisplayControlLookupTest, OpensTheFrameworkOnceEvenIfItBecomesLoadableBeforeTheListIsUsed) {
    inNewProcess([] {
        EXPECT_FALSE(DCTLCanControlDisplays());

        state().offer.framework = allFour;
        expectSwitchingBy("");
        expectListingBy("");
        EXPECT_EQ(openSkyLight(), nullptr);
        EXPECT_THAT(state().openings, ElementsAre(frameworkOpening));
    });
}

}  // namespace
}  // namespace tavrel
