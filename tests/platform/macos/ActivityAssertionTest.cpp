#include "platform/macos/ActivityAssertion.h"

#include <optional>

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/CoreFoundation.h"
#include "tests/platform/macos/simulated/ObjectiveC.h"

namespace tavrel {
namespace {

using simulatedMac::activities;
using simulatedMac::drainAutoreleasePool;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;

class ActivityAssertionTest : public MacFixture {
protected:
    ActivityAssertionTest() { simulatedMac::forgetActivities(); }
    ~ActivityAssertionTest() override {
        simulatedMac::setHasProcessInfo(true);
        EXPECT_EQ(simulatedMac::livingObjects(), 0U);
    }
};

TEST_F(ActivityAssertionTest, beginsAnActivityOfTheUserThatLetsTheMachineSleep) {
    const ActivityAssertion assertion("Looks after the displays");
    EXPECT_TRUE(assertion.isHeld());
    EXPECT_THAT(activities(),
                ElementsAre(FieldsAre(0x00EFFFFFU, "Looks after the displays", false, 2)));
}

TEST_F(ActivityAssertionTest, isHeldOnAfterTheLoopHasLetGoOfWhatItWasLent) {
    const ActivityAssertion assertion("Reason");
    drainAutoreleasePool();
    EXPECT_THAT(activities(), ElementsAre(FieldsAre(0x00EFFFFFU, "Reason", false, 1)));
}

TEST_F(ActivityAssertionTest, endsTheActivityAndLetsItsTokenGo) {
    std::optional<ActivityAssertion> assertion("Reason");
    drainAutoreleasePool();
    assertion.reset();
    EXPECT_THAT(activities(), ElementsAre(FieldsAre(0x00EFFFFFU, "Reason", true, 0)));
}

TEST_F(ActivityAssertionTest, doesNothingWhereThereIsNoSuchThing) {
    simulatedMac::setHasProcessInfo(false);
    const ActivityAssertion assertion("Reason");
    EXPECT_FALSE(assertion.isHeld());
    EXPECT_THAT(activities(), IsEmpty());
}

}  // namespace
}  // namespace tavrel
