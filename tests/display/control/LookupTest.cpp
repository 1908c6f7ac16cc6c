// What is found in one situation: SITUATION is its name, FRAMEWORK_FILE the framework (or
// ""), CONFIGURE and LIST name the entry points that are to be found (or ""), and OPENINGS
// says how often the framework is to be opened.
#include <gmock/gmock.h>

#include "display/control/DisplayControl.h"
#include "tests/display/control/StandIns.h"

namespace tavrel {
namespace {

using standIns::state;
using testing::ElementsAre;
using testing::IsEmpty;

void expectSwitchingBy(const std::string& entryPoint) {
    state().calls.clear();
    EXPECT_EQ(DCTLCanControlDisplays(), !entryPoint.empty());
    EXPECT_THAT(state().calls, IsEmpty());

    const std::int32_t status = DCTLSetDisplayEnabled(7, true);
    if (entryPoint.empty()) {
        EXPECT_EQ(status, 1006);
        EXPECT_THAT(state().calls, IsEmpty());
    } else {
        EXPECT_EQ(status, 0);
        EXPECT_THAT(state().calls, ElementsAre("begin(null)", entryPoint + "(transaction, 7, 1)",
                                               "complete(transaction, 2)"));
    }
}

void expectListingBy(const std::string& entryPoint) {
    state().calls.clear();
    state().displays = {11, 12};
    std::uint32_t displays[] = {1, 2, 3};
    std::uint32_t count = 77;

    const std::int32_t status = DCTLGetDisplayList(3, displays, &count);
    if (entryPoint.empty()) {
        EXPECT_EQ(status, 1006);
        EXPECT_THAT(state().calls, IsEmpty());
        EXPECT_EQ(count, 77U);
        EXPECT_THAT(displays, ElementsAre(1, 2, 3));
    } else {
        EXPECT_EQ(status, 0);
        EXPECT_THAT(state().calls, ElementsAre(entryPoint + "(3, array, count)"));
        EXPECT_EQ(count, 2U);
        EXPECT_THAT(displays, ElementsAre(11, 12, 3));
    }
}

TEST(DisplayControlLookup, SITUATION) {
    state().frameworkFile = FRAMEWORK_FILE;
    EXPECT_THAT(state().openings, IsEmpty());

    expectSwitchingBy(CONFIGURE);
    expectListingBy(LIST);
    EXPECT_EQ(state().openings,
              std::vector<standIns::Opening>(OPENINGS, standIns::frameworkOpening));

    // The second time all is known.
    const auto configure = resolveConfigureDisplayEnabled();
    const auto list = resolveGetDisplayList();
    expectSwitchingBy(CONFIGURE);
    expectListingBy(LIST);
    EXPECT_EQ(resolveConfigureDisplayEnabled(), configure);
    EXPECT_EQ(resolveGetDisplayList(), list);
    EXPECT_EQ(state().openings.size(), std::size_t{OPENINGS});
}

}  // namespace
}  // namespace tavrel
