// A process without entry points, in which they turn up later: FRAMEWORK_FILE has them all.
#include <dlfcn.h>
#include <gmock/gmock.h>

#include "display/control/DisplayControl.h"
#include "tests/display/control/StandIns.h"

namespace tavrel {
namespace {

using standIns::state;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(DisplayControlFailedLookup, IsNotRetriedWhenTheFrameworkBecomesLoadable) {
    ASSERT_FALSE(DCTLCanControlDisplays());
    state().frameworkFile = FRAMEWORK_FILE;

    EXPECT_FALSE(DCTLCanControlDisplays());
    EXPECT_EQ(DCTLSetDisplayEnabled(1, false), 1006);
    EXPECT_EQ(resolveConfigureDisplayEnabled(), nullptr);

    // The list has not been looked up before, but the framework has been tried.
    std::uint32_t count = 5;
    EXPECT_EQ(DCTLGetDisplayList(0, nullptr, &count), 1006);
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(openSkyLight(), nullptr);
    EXPECT_THAT(state().openings, ElementsAre(standIns::frameworkOpening));

    // Nor when they appear in the process itself.
    ASSERT_NE(dlopen(FRAMEWORK_FILE, RTLD_NOW | RTLD_GLOBAL), nullptr);
    ASSERT_NE(dlsym(RTLD_DEFAULT, "CGSConfigureDisplayEnabled"), nullptr);
    ASSERT_NE(dlsym(RTLD_DEFAULT, "SLSGetDisplayList"), nullptr);
    EXPECT_FALSE(DCTLCanControlDisplays());
    EXPECT_EQ(DCTLSetDisplayEnabled(1, false), 1006);
    EXPECT_EQ(DCTLGetDisplayList(0, nullptr, &count), 1006);
    EXPECT_THAT(state().calls, IsEmpty());
}

}  // namespace
}  // namespace tavrel
