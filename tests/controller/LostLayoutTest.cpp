// Every kind of report when no display can be used any more.
#include <chrono>
#include <cstdint>
#include <tuple>

#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::Combine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Values;
using WhenOff = SimulatedWindowServer::WhenOff;

/// The flags of a report, and whether a display that is off is inactive or offline.
class LostLayoutTest : public ControllerTest,
                       public testing::WithParamInterface<std::tuple<std::uint32_t, WhenOff>> {
protected:
    LostLayoutTest() : ControllerTest(std::get<WhenOff>(GetParam())) {}

    void SetUp() override {
        startWith(both);
        recordStatuses();
        scheduler.advance(100ms);
        switchOffSilently(both);
    }

    /// A report with this test's flags leads to a restoration after `delay`, with `message`.
    void expectRestorationAfter(std::chrono::milliseconds delay, const char* message) {
        server.report(panel, std::get<std::uint32_t>(GetParam()));

        scheduler.advance(delay - 1ms);
        EXPECT_THAT(server.takeChanges(), IsEmpty());
        scheduler.advance(1ms);
        EXPECT_EQ(server.takeChanges(), switchedOn(both));
        scheduler.advance(450ms);
        EXPECT_THAT(statuses(), ElementsAre("Both displays are ready", restoring, message));
    }

    const DisplayIDs both{panel, firstExternal};
};

using AddOrRemoveReportTest = LostLayoutTest;
using OtherReportTest = LostLayoutTest;

TEST_P(AddOrRemoveReportTest, RestoresAfterTheDebounceWithItsMessage) {
    expectRestorationAfter(600ms, restored);
}

TEST_P(OtherReportTest, RestoresAfterThirtyFiveHundredthsWithItsMessage) {
    expectRestorationAfter(350ms, recovered);
}

INSTANTIATE_TEST_SUITE_P(All, AddOrRemoveReportTest,
                         Combine(Values(displayChange::add, displayChange::remove,
                                        displayChange::add | displayChange::remove,
                                        displayChange::add | displayChange::enabled,
                                        displayChange::remove | displayChange::disabled |
                                            displayChange::moved),
                                 Values(WhenOff::staysOnline, WhenOff::goesOffline)));

INSTANTIATE_TEST_SUITE_P(
    All, OtherReportTest,
    Combine(Values(std::uint32_t{0}, displayChange::moved, displayChange::setMain,
                   displayChange::setMode, displayChange::enabled, displayChange::disabled,
                   displayChange::mirror, displayChange::unMirror,
                   displayChange::desktopShapeChanged,
                   displayChange::disabled | displayChange::setMain | displayChange::moved),
            Values(WhenOff::staysOnline, WhenOff::goesOffline)));

}  // namespace
}  // namespace tavrel
