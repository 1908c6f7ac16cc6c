#include "platform/macos/ActivityAssertion.h"

#include <optional>

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/ObjectiveC.h"

namespace tavrel {
namespace {

using simulatedMac::activities;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;

class ActivityAssertionTest : public MacFixture {
protected:
    ActivityAssertionTest() { simulatedMac::resetActivities(); }
};

TEST_F(ActivityAssertionTest, HoldsAnActivityOfTheUserThatLetsTheMachineSleep) {
    std::optional<ActivityAssertion> assertion("Looks after the displays");

    simulatedMac::drainAutoreleasePool();
    EXPECT_THAT(activities(),
                ElementsAre(FieldsAre(0x00EFFFFFU, "Looks after the displays", false, 1)));

    assertion.reset();
    EXPECT_THAT(activities(),
                ElementsAre(FieldsAre(0x00EFFFFFU, "Looks after the displays", true, 0)));
}

TEST_F(ActivityAssertionTest, DoesNothingWhereTheSystemHasNoActivities) {
    simulatedMac::removeProcessInfo();

    const ActivityAssertion assertion("Reason");

    EXPECT_THAT(activities(), IsEmpty());
}

}  // namespace
}  // namespace tavrel
