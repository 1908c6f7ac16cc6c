#include "platform/macos/MacUserDefaults.h"

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/Preferences.h"

namespace tavrel {
namespace {

using simulatedMac::plantPreference;
using simulatedMac::preferenceData;
using simulatedMac::Refusals;
using simulatedMac::refuseNewObjects;
using simulatedMac::takeCalls;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = simulatedMac::Preference::Kind;

class MacUserDefaultsTest : public MacFixture {
protected:
    ~MacUserDefaultsTest() override { refuseNewObjects(false); }

    MacUserDefaults defaults;
};

TEST_F(MacUserDefaultsTest, HasNoDataUnderAKeyThatWasNeverSet) {
    EXPECT_EQ(defaults.data("Key"), std::nullopt);
}

TEST_F(MacUserDefaultsTest, ReadsAnyBytesAsTheyWereWritten) {
    for (const std::string& bytes : {std::string("[{\"id\":1}]"), std::string("\0\xFF\0", 3),
                                     std::string(), std::string(10'000, 'x')}) {
        EXPECT_TRUE(defaults.setData("Key", bytes));
        EXPECT_EQ(defaults.data("Key"), bytes);
    }
}

TEST_F(MacUserDefaultsTest, SynchronizesAValueSoThatOtherProcessesSeeItAndLeavesOtherKeysAlone) {
    plantPreference(mac, "Other", Kind::data, "old");

    EXPECT_TRUE(defaults.setData("Key", "value"));
    EXPECT_THAT(takeCalls(),
                ElementsAre("CFPreferencesSetAppValue(Key)", "CFPreferencesAppSynchronize"));
    EXPECT_EQ(preferenceData(mac, "Key"), "value");
    EXPECT_EQ(defaults.data("Other"), "old");
}

TEST_F(MacUserDefaultsTest, TakesAValueOfAnotherKindForNoneAndReplacesIt) {
    for (const Kind kind : {Kind::string, Kind::number}) {
        plantPreference(mac, "Key", kind, "12");

        EXPECT_EQ(defaults.data("Key"), std::nullopt);
        EXPECT_TRUE(defaults.setData("Key", "value"));
        EXPECT_EQ(defaults.data("Key"), "value");
    }
}

TEST_F(MacUserDefaultsTest, ReadsAValueThatCannotBeWrittenToTheDiskYet) {
    plantPreference(mac, "Key", Kind::data, "old");
    refuse(&Refusals::synchronize, 1);

    EXPECT_TRUE(defaults.setData("Key", "value"));
    EXPECT_EQ(defaults.data("Key"), "value");
    EXPECT_EQ(preferenceData(mac, "Key"), "old");

    refuse(&Refusals::synchronize, 0);
    EXPECT_TRUE(defaults.setData("Key", "value"));
    EXPECT_EQ(preferenceData(mac, "Key"), "value");
}

TEST_F(MacUserDefaultsTest, RefusesAKeyThatIsNotUtf8) {
    EXPECT_FALSE(defaults.setData("\xFF", "value"));
    EXPECT_EQ(defaults.data("\xFF"), std::nullopt);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(MacUserDefaultsTest, KeepsTheOldValueWhenMemoryRunsOut) {
    plantPreference(mac, "Key", Kind::data, "old");

    refuseNewObjects(true);
    EXPECT_FALSE(defaults.setData("Key", "value"));
    EXPECT_EQ(defaults.data("Key"), std::nullopt);

    refuseNewObjects(false);
    EXPECT_EQ(defaults.data("Key"), "old");
}

}  // namespace
}  // namespace tavrel
