#include <gmock/gmock.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "platform/layout/Identity.h"
#include "tests/e2e/Session.h"
#include "tests/support/MonitorFacts.h"

/// What version 0.1 stored, of monitors with an EDID, is still theirs, and follows them from then
/// on to whatever port they are plugged into.
namespace tavrel::e2e {
namespace {

using Json = nlohmann::json;
using support::MonitorFacts;
using testing::SizeIs;

class EarlierVersionTest : public testing::Test {
protected:
    EarlierVersionTest() {
        for (std::uint32_t serial = 0; serial < ports.size(); ++serial) {
            plug(serial, ports[serial]);
        }
        desktop.otherClient().run({"--output", "DUMMY1", "--mode", "1280x1024", "--pos", "1920x56",
                                   "--output", "DUMMY2", "--pos", "3200x0"});
    }

    void plug(std::uint32_t serial, const std::string& port) {
        support::showEdid(desktop.displayName(), port, MonitorFacts{.serial = serial});
    }

    /// The number that version 0.1 gave the monitor at this port.
    static DisplayID oldNumber(std::uint32_t serial, const std::string& port) {
        return layout::stableHash(port + "/1133/1/" + std::to_string(serial));
    }

    /// The store as that version left it: the second monitor is off.
    void plantOldStore() {
        const std::chrono::duration<double> now =
            std::chrono::system_clock::now().time_since_epoch();
        constexpr double referenceDate = 978'307'200;
        Json known = Json::array();
        for (std::uint32_t serial = 0; serial < ports.size(); ++serial) {
            known.push_back({{"id", oldNumber(serial, ports[serial])},
                             {"isBuiltIn", false},
                             {"lastSeenAt", now.count() - referenceDate - 60}});
        }
        Json record = Json::parse(R"({"area":{"height":1024,"width":1280,"x":1920,"y":56},
            "crtcHint":0,"mirrors":[],"mode":{"dotClock":157500000,"flags":5,"height":1024,
            "horizontalSkew":0,"horizontalSyncEnd":1504,"horizontalSyncStart":1344,
            "horizontalTotal":1728,"verticalSyncEnd":1028,"verticalSyncStart":1025,
            "verticalTotal":1072,"width":1280},"modeHint":0,"primary":false,
            "primaryOnLoan":false,"rotation":1,"screen":{"height":1080,
            "heightInMillimetres":285,"width":5120,"widthInMillimetres":1354},
            "transform":{"filter":"","matrix":[65536,0,0,0,65536,0,0,0,65536],
            "parameters":[]}})");
        record["display"] = oldNumber(1, "DUMMY1");
        home.plantDefaults(Json{{"TavrelKnownDisplays", known.dump()},
                                {"TavrelRememberedOutputs", Json::array({record}).dump()}}
                               .dump());
    }

    std::set<DisplayID> storedNumbers() const {
        const Json store = Json::parse(support::readFile(home.defaultsFile()));
        std::set<DisplayID> numbers;
        for (const Json& each : Json::parse(store.value("TavrelKnownDisplays", "[]"))) {
            numbers.insert(each.at("id").get<DisplayID>());
        }
        return numbers;
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    const std::vector<std::string> ports{"DUMMY0", "DUMMY1", "DUMMY2"};
    support::UserHome home;
};

TEST_F(EarlierVersionTest, NoRecordOfItIsLostAndEachFollowsItsMonitor) {
    const std::vector<support::Monitor> before = desktop.monitors();
    desktop.otherClient().switchOff("DUMMY1");
    plantOldStore();
    const std::set<DisplayID> numbers = storedNumbers();
    ASSERT_THAT(numbers, SizeIs(3));

    {
        Session first(desktop, home);
        ASSERT_TRUE(first.says("Found 3 displays"));
        EXPECT_EQ(desktop.monitors(), before) << "what it left off is on again, as it was";
        EXPECT_EQ(storedNumbers(), numbers);
        first.application().process().signal(SIGTERM);
        ASSERT_TRUE(first.exitsWith(0));
    }

    plug(1, "DUMMY0");
    plug(0, "DUMMY1");
    Session second(desktop, home);
    ASSERT_TRUE(second.says("Found 3 displays"));

    EXPECT_THAT(second.window().rows, SizeIs(3));
    EXPECT_EQ(storedNumbers(), numbers);
}

}  // namespace
}  // namespace tavrel::e2e
