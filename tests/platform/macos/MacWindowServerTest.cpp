#include "platform/macos/MacWindowServer.h"

#include <optional>
#include <thread>

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/Transactions.h"

namespace tavrel {
namespace {

using simulatedMac::Display;
using simulatedMac::Refusals;
using simulatedMac::State;
using simulatedMac::takeCalls;
using testing::ElementsAre;
using testing::Optional;

class MacWindowServerTest : public MacFixture {
protected:
    void setWhenOff(DisplayID display, Display::WhenOff whenOff) {
        mac.with([&](State& state) { find(state, display)->whenOff = whenOff; });
    }

    auto allDisplays() { return server.now()->allDisplays(); }
    auto onlineDisplays() { return server.now()->onlineDisplays(); }

    MacWindowServer server;
};

TEST_F(MacWindowServerTest, looksUpBothEntryPointsWhenItIsMade) {
    // Whoever comes first now would find nothing.
    mac.with([](State& state) { state.entryPoints = {.inProcess = 0, .hasFramework = false}; });
    EXPECT_TRUE(server.canSwitch());
    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, monitor, other)));
}

TEST_F(MacWindowServerTest, switchesOffInOneTransactionThatIsCompletedPermanently) {
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 0);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(2, 0)",
                            "CGCompleteDisplayConfiguration(2)"));
    EXPECT_FALSE(isOn(mac, monitor));
    EXPECT_EQ(simulatedMac::openTransactions(), 0U);
}

TEST_F(MacWindowServerTest, switchesOnAgain) {
    server.setDisplayEnabled(monitor, false);
    takeCalls();
    EXPECT_EQ(server.setDisplayEnabled(monitor, true), 0);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(2, 1)",
                            "CGCompleteDisplayConfiguration(2)"));
    EXPECT_TRUE(isOn(mac, monitor));
}

TEST_F(MacWindowServerTest, givesUpWhenATransactionCannotBegin) {
    refuse(&Refusals::begin, 1002);
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 1002);
    EXPECT_THAT(takeCalls(), ElementsAre("CGBeginDisplayConfiguration"));
    EXPECT_TRUE(isOn(mac, monitor));
}

TEST_F(MacWindowServerTest, cancelsWhenTheDisplayIsRefusedAndHandsBackThatStatus) {
    refuse(&Refusals::configure, 1010);
    refuse(&Refusals::cancel, 1000);
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 1010);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(2, 0)",
                            "CGCancelDisplayConfiguration"));
    EXPECT_TRUE(isOn(mac, monitor));
    EXPECT_EQ(simulatedMac::openTransactions(), 0U);
}

TEST_F(MacWindowServerTest, cancelsForADisplayThatTheServerDoesNotKnow) {
    EXPECT_EQ(server.setDisplayEnabled(77, false), 1001);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(77, 0)",
                            "CGCancelDisplayConfiguration"));
}

TEST_F(MacWindowServerTest, handsBackTheStatusOfACompletionThatFails) {
    refuse(&Refusals::complete, 1004);
    EXPECT_EQ(server.setDisplayEnabled(monitor, false), 1004);
    EXPECT_THAT(takeCalls(),
                ElementsAre("CGBeginDisplayConfiguration", "CGSConfigureDisplayEnabled(2, 0)",
                            "CGCompleteDisplayConfiguration(2)"));
    EXPECT_TRUE(isOn(mac, monitor));
}

TEST_F(MacWindowServerTest, changesOneDisplayAtATime) {
    constexpr int rounds = 50;
    const auto switchAbout = [this](DisplayID display) {
        for (int i = 0; i < rounds; ++i) {
            server.setDisplayEnabled(display, i % 2 == 1);
        }
    };
    std::thread one(switchAbout, monitor);
    std::thread two(switchAbout, other);
    one.join();
    two.join();
    const std::vector<std::string> calls = takeCalls();
    ASSERT_EQ(calls.size(), 2U * rounds * 3);
    for (std::size_t i = 0; i < calls.size(); i += 3) {
        ASSERT_EQ(calls[i], "CGBeginDisplayConfiguration");
        ASSERT_EQ(calls[i + 2], "CGCompleteDisplayConfiguration(2)");
    }
}

TEST_F(MacWindowServerTest, aDisplayThatIsOffLeavesThePublicListOnly) {
    server.setDisplayEnabled(monitor, false);
    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, monitor, other)));
    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, other)));
    EXPECT_FALSE(server.now()->isOnline(monitor));
    EXPECT_FALSE(server.now()->isActive(monitor));
    EXPECT_EQ(server.now()->serialNumber(monitor), 3U);
}

TEST_F(MacWindowServerTest, aDisplayThatIsOffMayLeaveBothListsAndIsSwitchedOnAllTheSame) {
    setWhenOff(monitor, Display::WhenOff::vanishes);
    server.setDisplayEnabled(monitor, false);
    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, other)));
    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, other)));
    EXPECT_FALSE(server.now()->isOnline(monitor));
    EXPECT_EQ(server.setDisplayEnabled(monitor, true), 0);
    EXPECT_TRUE(server.now()->isOnline(monitor));
}

TEST_F(MacWindowServerTest, answersQuestionsAsTheServerDoes) {
    EXPECT_TRUE(server.now()->isBuiltIn(panel));
    EXPECT_FALSE(server.now()->isBuiltIn(monitor));
    EXPECT_TRUE(server.now()->isOnline(monitor));
    EXPECT_TRUE(server.now()->isActive(monitor));
    EXPECT_EQ(server.now()->vendorNumber(monitor), 1U);
    EXPECT_EQ(server.now()->modelNumber(monitor), 2U);
    EXPECT_EQ(server.now()->serialNumber(monitor), 3U);
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowIsNotBuiltIn) {
    EXPECT_FALSE(server.now()->isBuiltIn(77));
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowIsNotOnline) {
    EXPECT_FALSE(server.now()->isOnline(77));
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowIsNotActive) {
    EXPECT_FALSE(server.now()->isActive(77));
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowHasNumbersZero) {
    EXPECT_EQ(server.now()->vendorNumber(77), 0U);
    EXPECT_EQ(server.now()->modelNumber(77), 0U);
    EXPECT_EQ(server.now()->serialNumber(77), 0U);
}

TEST_F(MacWindowServerTest, aPulledDisplayIsNoLongerKnown) {
    disconnect(mac, panel);
    EXPECT_FALSE(server.now()->isBuiltIn(panel));
    EXPECT_FALSE(server.now()->isOnline(panel));
    EXPECT_FALSE(server.now()->isActive(panel));
    EXPECT_EQ(server.now()->vendorNumber(panel), 0U);
}

TEST_F(MacWindowServerTest, AsksEachQuestionWhenItIsPut) {
    const auto moment = server.now();
    EXPECT_TRUE(moment->isActive(monitor));

    server.setDisplayEnabled(monitor, false);

    EXPECT_FALSE(moment->isActive(monitor));
}

TEST_F(MacWindowServerTest, AsksForAtMost64OfAllDisplays) {
    takeCalls();

    allDisplays();

    EXPECT_THAT(takeCalls(), ElementsAre("CGSGetDisplayList(64)"));
}

TEST_F(MacWindowServerTest, AsksHowManyAreOnlineAndThenForThatMany) {
    takeCalls();

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
    refuse(&Refusals::claimed, 1000);

    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, monitor, other)));
    const auto all = allDisplays();
    ASSERT_TRUE(all.has_value());
    EXPECT_EQ(all->size(), 64U);
}

TEST_F(MacWindowServerTest, TakesOnlyTheEntriesThatTheServerSaysItWrote) {
    refuse(&Refusals::claimed, -1);

    EXPECT_THAT(onlineDisplays(), Optional(ElementsAre(panel, monitor)));
    EXPECT_THAT(allDisplays(), Optional(ElementsAre(panel, monitor)));
}

}  // namespace
}  // namespace tavrel
