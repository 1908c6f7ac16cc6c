#include "platform/macos/MacWindowServer.h"

#include <array>
#include <numeric>
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

class MacWindowServerTest : public MacFixture {
protected:
    void setWhenOff(DisplayID display, Display::WhenOff whenOff) {
        mac.with([&](State& state) { find(state, display)->whenOff = whenOff; });
    }

    std::vector<DisplayID> privateList() {
        std::array<DisplayID, 8> displays{};
        std::uint32_t count = 0;
        EXPECT_EQ(server.getDisplayList(displays.size(), displays.data(), &count), 0);
        return {displays.begin(), displays.begin() + count};
    }

    std::vector<DisplayID> onlineList() {
        std::uint32_t count = 0;
        EXPECT_EQ(server.getOnlineDisplayList(0, nullptr, &count), 0);
        std::vector<DisplayID> displays(count);
        EXPECT_EQ(server.getOnlineDisplayList(count, displays.data(), &count), 0);
        return displays;
    }

    MacWindowServer server;
};

TEST_F(MacWindowServerTest, looksUpBothEntryPointsWhenItIsMade) {
    // Whoever comes first now would find nothing.
    mac.with([](State& state) { state.entryPoints = {.inProcess = 0, .hasFramework = false}; });
    EXPECT_TRUE(server.canControlDisplays());
    EXPECT_THAT(privateList(), ElementsAre(panel, monitor, other));
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
    EXPECT_THAT(privateList(), ElementsAre(panel, monitor, other));
    EXPECT_THAT(onlineList(), ElementsAre(panel, other));
    EXPECT_FALSE(server.isOnline(monitor));
    EXPECT_FALSE(server.isActive(monitor));
    EXPECT_EQ(server.serialNumber(monitor), 3U);
}

TEST_F(MacWindowServerTest, aDisplayThatIsOffMayLeaveBothListsAndIsSwitchedOnAllTheSame) {
    setWhenOff(monitor, Display::WhenOff::vanishes);
    server.setDisplayEnabled(monitor, false);
    EXPECT_THAT(privateList(), ElementsAre(panel, other));
    EXPECT_THAT(onlineList(), ElementsAre(panel, other));
    EXPECT_FALSE(server.isOnline(monitor));
    EXPECT_EQ(server.setDisplayEnabled(monitor, true), 0);
    EXPECT_TRUE(server.isOnline(monitor));
}

TEST_F(MacWindowServerTest, answersQuestionsAsTheServerDoes) {
    EXPECT_TRUE(server.isBuiltIn(panel));
    EXPECT_FALSE(server.isBuiltIn(monitor));
    EXPECT_TRUE(server.isOnline(monitor));
    EXPECT_TRUE(server.isActive(monitor));
    EXPECT_EQ(server.vendorNumber(monitor), 1U);
    EXPECT_EQ(server.modelNumber(monitor), 2U);
    EXPECT_EQ(server.serialNumber(monitor), 3U);
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowIsNotBuiltIn) {
    EXPECT_FALSE(server.isBuiltIn(77));
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowIsNotOnline) {
    EXPECT_FALSE(server.isOnline(77));
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowIsNotActive) {
    EXPECT_FALSE(server.isActive(77));
}

TEST_F(MacWindowServerTest, anIdentifierThatTheServerDoesNotKnowHasNumbersZero) {
    EXPECT_EQ(server.vendorNumber(77), 0U);
    EXPECT_EQ(server.modelNumber(77), 0U);
    EXPECT_EQ(server.serialNumber(77), 0U);
}

TEST_F(MacWindowServerTest, aPulledDisplayIsNoLongerKnown) {
    disconnect(mac, panel);
    EXPECT_FALSE(server.isBuiltIn(panel));
    EXPECT_FALSE(server.isOnline(panel));
    EXPECT_FALSE(server.isActive(panel));
    EXPECT_EQ(server.vendorNumber(panel), 0U);
}

TEST_F(MacWindowServerTest, handsBackTheListsStatuses) {
    refuse(&Refusals::privateList, 1011);
    refuse(&Refusals::onlineList, 1000);
    std::uint32_t count = 5;
    EXPECT_EQ(server.getDisplayList(0, nullptr, &count), 1011);
    EXPECT_EQ(server.getOnlineDisplayList(0, nullptr, &count), 1000);
    EXPECT_EQ(count, 5U);
}

TEST_F(MacWindowServerTest, fillsNoMoreOfAListThanThereIsRoomFor) {
    std::array<DisplayID, 2> displays{};
    std::uint32_t count = 0;
    EXPECT_EQ(server.getOnlineDisplayList(1, displays.data(), &count), 0);
    EXPECT_THAT(displays, ElementsAre(panel, 0U));
    EXPECT_EQ(count, 1U);
    EXPECT_THAT(takeCalls(), ElementsAre("CGGetOnlineDisplayList(1)"));
}

}  // namespace
}  // namespace tavrel
