#include "platform/macos/MacUserDefaults.h"

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/CoreFoundation.h"

namespace tavrel {
namespace {

using simulatedMac::livingObjects;
using simulatedMac::plantPreference;
using simulatedMac::preferenceData;
using simulatedMac::refuseNewObjects;
using simulatedMac::takeCalls;
using testing::ElementsAre;
using Kind = simulatedMac::Preference::Kind;

class MacUserDefaultsTest : public MacFixture {
protected:
    ~MacUserDefaultsTest() override {
        refuseNewObjects(false);
        EXPECT_EQ(livingObjects(), 0U) << "what was made or copied is to be released";
    }

    MacUserDefaults defaults;
};

TEST_F(MacUserDefaultsTest, aKeyThatWasNeverSetIsAbsent) {
    EXPECT_EQ(defaults.data("Key"), std::nullopt);
}

TEST_F(MacUserDefaultsTest, aValueIsReadAsItWasWritten) {
    for (const std::string& bytes : {std::string("[{\"id\":1}]"), std::string("\0\xFF\0", 3),
                                     std::string(), std::string(10'000, 'x')}) {
        EXPECT_TRUE(defaults.setData("Key", bytes));
        EXPECT_EQ(defaults.data("Key"), bytes);
    }
}

TEST_F(MacUserDefaultsTest, aValueIsSetAndThenSynchronizedSoThatOtherProcessesSeeIt) {
    EXPECT_TRUE(defaults.setData("Key", "value"));
    EXPECT_THAT(takeCalls(),
                ElementsAre("CFPreferencesSetAppValue(Key)", "CFPreferencesAppSynchronize"));
    EXPECT_EQ(preferenceData(mac, "Key"), "value");
}

TEST_F(MacUserDefaultsTest, valuesOfOtherKindsCountAsAbsent) {
    for (const Kind kind : {Kind::string, Kind::number}) {
        plantPreference(mac, "Key", kind, "12");
        EXPECT_EQ(defaults.data("Key"), std::nullopt);
    }
}

TEST_F(MacUserDefaultsTest, aValueOfAnotherKindIsReplaced) {
    plantPreference(mac, "Key", Kind::string, "words");
    EXPECT_TRUE(defaults.setData("Key", "value"));
    EXPECT_EQ(defaults.data("Key"), "value");
}

TEST_F(MacUserDefaultsTest, otherKeysStayAsTheyAre) {
    plantPreference(mac, "Other", Kind::data, "old");
    EXPECT_TRUE(defaults.setData("Key", "value"));
    EXPECT_EQ(defaults.data("Other"), "old");
}

TEST_F(MacUserDefaultsTest, whatCannotBeWrittenToTheDiskYetIsReadAllTheSame) {
    plantPreference(mac, "Key", Kind::data, "old");
    mac.with([](simulatedMac::State& state) { state.refusals.synchronize = true; });
    EXPECT_TRUE(defaults.setData("Key", "value"));
    EXPECT_EQ(defaults.data("Key"), "value");
    EXPECT_EQ(preferenceData(mac, "Key"), "old");

    mac.with([](simulatedMac::State& state) { state.refusals.synchronize = false; });
    EXPECT_TRUE(defaults.setData("Key", "value"));
}

TEST_F(MacUserDefaultsTest, aKeyThatIsNoTextIsRefused) {
    EXPECT_FALSE(defaults.setData("\xFF", "value"));
    EXPECT_EQ(defaults.data("\xFF"), std::nullopt);
    EXPECT_THAT(takeCalls(), testing::IsEmpty());
}

TEST_F(MacUserDefaultsTest, withoutMemoryTheOldValueStands) {
    plantPreference(mac, "Key", Kind::data, "old");
    refuseNewObjects(true);
    EXPECT_FALSE(defaults.setData("Key", "value"));
    EXPECT_EQ(defaults.data("Key"), std::nullopt);
    refuseNewObjects(false);
    EXPECT_EQ(defaults.data("Key"), "old");
}

}  // namespace
}  // namespace tavrel
