#include "platform/macos/MacWindowServer.h"

#include <optional>
#include <thread>

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/Transactions.h"
#include "tests/support/NewProcess.h"

namespace tavrel {
namespace {

using simulatedMac::Display;
using simulatedMac::Refusals;
using simulatedMac::State;
using simulatedMac::takeCalls;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

class MacWindowServerTest : public MacFixture {
protected:
    auto allDisplays() { return server.now()->allDisplays(); }
    auto onlineDisplays() { return server.now()->onlineDisplays(); }

    MacWindowServer server;
};

TEST_F(MacWindowServerTest, LooksUpBothEntryPointsWhenItIsMade) {
    mac.with([](State& state) { state.hasEntryPoints = false; });

    EXPECT_TRUE(server.canSwitch());
    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, monitor, other)));
}

TEST_F(MacWindowServerTest, SwitchesOffAndOnInATransactionThatIsCompletedPermanently) {
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 0);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(2, 0)",
                            "CGCompleteDisplayConfiguration(2)"));
    EXPECT_FALSE(isOn(mac, monitor));

    EXPECT_EQ(server.setDisplayEnabled(monitor, true), 0);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(2, 1)",
                            "CGCompleteDisplayConfiguration(2)"));
    EXPECT_TRUE(isOn(mac, monitor));
}

TEST_F(MacWindowServerTest, HandsBackTheStatusOfTheStepThatIsRefusedAndLeavesNothingOpen) {
    refuse(&Refusals::cancel, 1000);
    for (const auto refused : {&Refusals::begin, &Refusals::configure, &Refusals::complete}) {
        refuse(refused, 1010);
        EXPECT_EQ(server.setDisplayEnabled(monitor, false), 1010);
        refuse(refused, 0);
    }
    EXPECT_EQ(server.setDisplayEnabled(77, false), 1001) << "which the server does not know";

    EXPECT_TRUE(isOn(mac, monitor));
    EXPECT_EQ(simulatedMac::openTransactions(), 0U);
}

TEST_F(MacWindowServerTest, ChangesOneDisplayAtATime) {
    constexpr int rounds = 50;
    const auto switchRepeatedly = [this](DisplayID display) {
        for (int i = 0; i < rounds; ++i) {
            server.setDisplayEnabled(display, i % 2 == 1);
        }
    };

    std::thread one(switchRepeatedly, monitor);
    std::thread two(switchRepeatedly, other);
    one.join();
    two.join();

    const std::vector<std::string> calls = takeCalls();
    ASSERT_EQ(calls.size(), 2U * rounds * 3);
    for (std::size_t i = 0; i < calls.size(); i += 3) {
        ASSERT_EQ(calls[i], "CGBeginDisplayConfiguration");
        ASSERT_EQ(calls[i + 2], "CGCompleteDisplayConfiguration(2)");
    }
}

TEST_F(MacWindowServerTest, FindsADisplayThatIsOffInThePrivateListOnly) {
    server.setDisplayEnabled(monitor, false);

    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, monitor, other)));
    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, other)));
    EXPECT_FALSE(server.now()->isOnline(monitor));
    EXPECT_FALSE(server.now()->isActive(monitor));
    EXPECT_EQ(server.now()->serialNumber(monitor), 3U);
}

TEST_F(MacWindowServerTest, SwitchesOnADisplayThatHasLeftBothLists) {
    mac.with([](State& state) { find(state, monitor)->whenOff = Display::WhenOff::vanishes; });

    server.setDisplayEnabled(monitor, false);
    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, other)));
    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, other)));
    EXPECT_FALSE(server.now()->isOnline(monitor));

    EXPECT_EQ(server.setDisplayEnabled(monitor, true), 0);
    EXPECT_TRUE(server.now()->isOnline(monitor));
}

TEST_F(MacWindowServerTest, AnswersQuestionsAsTheServerDoes) {
    const auto moment = server.now();

    EXPECT_TRUE(moment->isBuiltIn(panel));
    EXPECT_FALSE(moment->isBuiltIn(monitor));
    EXPECT_TRUE(moment->isOnline(monitor));
    EXPECT_TRUE(moment->isActive(monitor));
    EXPECT_EQ(moment->vendorNumber(monitor), 1U);
    EXPECT_EQ(moment->modelNumber(monitor), 2U);
    EXPECT_EQ(moment->serialNumber(monitor), 3U);
}

TEST_F(MacWindowServerTest, SaysNoOfADisplayThatTheServerDoesNotKnowAndPassesItsNumbersOn) {
    disconnect(mac, panel);
    const auto moment = server.now();

    for (const DisplayID unknown : {panel, DisplayID{77}}) {
        EXPECT_FALSE(moment->isBuiltIn(unknown));
        EXPECT_FALSE(moment->isOnline(unknown));
        EXPECT_FALSE(moment->isActive(unknown));
        EXPECT_EQ(moment->vendorNumber(unknown), 0xFFFFFFFF);
        EXPECT_EQ(moment->modelNumber(unknown), 0xFFFFFFFF);
        EXPECT_EQ(moment->serialNumber(unknown), 0xFFFFFFFF);
    }
}

TEST_F(MacWindowServerTest, AsksEachQuestionWhenItIsPut) {
    const auto moment = server.now();
    EXPECT_TRUE(moment->isActive(monitor));

    server.setDisplayEnabled(monitor, false);

    EXPECT_FALSE(moment->isActive(monitor));
}

TEST_F(MacWindowServerTest, AsksForAtMost64OfAllDisplays) {
    allDisplays();

    EXPECT_THAT(takeCalls(), ElementsAre("CGSGetDisplayList(64)"));
}

TEST_F(MacWindowServerTest, AsksHowManyDisplaysAreOnlineAndThenForThatMany) {
    onlineDisplays();

    EXPECT_THAT(takeCalls(), ElementsAre("CGGetOnlineDisplayList(0)", "CGGetOnlineDisplayList(3)"));
}

TEST_F(MacWindowServerTest, HasNoListWhenTheServerRefusesIt) {
    refuse(&Refusals::privateList, 1011);
    EXPECT_EQ(allDisplays(), std::nullopt);

    refuse(&Refusals::onlineList, 1000);
    EXPECT_EQ(onlineDisplays(), std::nullopt);

    refuse(&Refusals::onlineCount, 1000);
    takeCalls();
    EXPECT_EQ(onlineDisplays(), std::nullopt);
    EXPECT_THAT(takeCalls(), ElementsAre("CGGetOnlineDisplayList(0)"));
}

TEST_F(MacWindowServerTest, TakesNoMoreEntriesThanItAskedForWhateverTheServerClaims) {
    mac.with([](State& state) { state.claimedTooMany = 1000; });

    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, monitor, other)));
    EXPECT_THAT(allDisplays(), Optional(SizeIs(64)));
}

TEST_F(MacWindowServerTest, TakesOnlyTheEntriesThatTheServerSaysItWrote) {
    mac.with([](State& state) { state.claimedTooMany = -1; });

    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, monitor)));
    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, monitor)));
}

using MacEntryPointsTest = MacFixture;

TEST_F(MacEntryPointsTest, BeginsNoTransactionWithoutTheEntryPoints) {
    support::inNewProcess([this] {
        mac.with([](State& state) { state.hasEntryPoints = false; });

        MacWindowServer server;
        EXPECT_THAT(takeCalls(), ElementsAre("dlopen(/System/Library/PrivateFrameworks/"
                                             "SkyLight.framework/SkyLight, 5)"));

        EXPECT_FALSE(server.canSwitch());
        EXPECT_EQ(server.setDisplayEnabled(monitor, false), 1006);
        EXPECT_EQ(server.setDisplayEnabled(monitor, true), 1006);
        EXPECT_EQ(server.now()->allDisplays(), std::nullopt);
        EXPECT_THAT(takeCalls(), IsEmpty());
        EXPECT_TRUE(isOn(mac, monitor));
    });
}

}  // namespace
}  // namespace tavrel
