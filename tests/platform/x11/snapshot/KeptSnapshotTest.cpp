#include "platform/x11/snapshot/KeptSnapshot.h"

#include <gmock/gmock.h>
#include <xcb/randr.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/connection/RequestRelay.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"
#include "tests/support/MonitorFacts.h"
#include "tests/support/XConnection.h"

namespace tavrel {
namespace {

using x11::Probing;

/// How a real server is asked every second, and what becomes of it when the server's events are
/// lost, or it says something else than a real one does.
class KeptSnapshotTest : public LiveServerTest {
protected:
    using Request = RequestRelay::Request;
    using Answer = AnswerStream::Message;

    void SetUp() override { ASSERT_NE(connection, nullptr); }

    Request randr(std::uint8_t minor) const { return {.opcode = randrOpcode, .minor = minor}; }

    std::shared_ptr<const x11::Snapshot> ask() { return kept.read(Probing::never); }

    /// What the server says to somebody who asks for the first time.
    x11::Snapshot truth() const {
        const auto direct = x11::Connection::connect({.displayName = desktop.displayName()});
        return x11::readSnapshot(*direct, Probing::never).value();
    }

    /// Asks until it is read whole no more.
    void settle() {
        ask();
        ask();
    }

    /// Whether the next question has everything read.
    bool readsWhole() {
        const auto before = countOf(randr(XCB_RANDR_GET_SCREEN_RESOURCES_CURRENT));
        ask();
        return countOf(randr(XCB_RANDR_GET_SCREEN_RESOURCES_CURRENT)) != before;
    }

    std::ptrdiff_t countOf(Request request) {
        const std::lock_guard lock(mutex);
        return std::count(requests.begin(), requests.end(), request);
    }

    void note(Request request) {
        std::function<void(Request)> before;
        {
            const std::lock_guard lock(mutex);
            requests.push_back(request);
            before = beforeRequest;
        }
        before(request);
    }

    bool pass(Answer& answer) {
        std::function<void(Answer&)> edit;
        {
            const std::lock_guard lock(mutex);
            edit = editAnswer;
        }
        edit(answer);
        return answer.kind != AnswerStream::Kind::event || !losesEvents;
    }

    void beforeEachRequest(std::function<void(Request)> act) {
        const std::lock_guard lock(mutex);
        beforeRequest = std::move(act);
    }
    void editEachAnswer(std::function<void(Answer&)> edit) {
        const std::lock_guard lock(mutex);
        editAnswer = std::move(edit);
    }

    /// From now on the server says that nothing is connected there.
    void unplug(const std::string& name) {
        editEachAnswer([this, name](Answer& answer) {
            constexpr std::size_t connectionAt = 24;
            constexpr std::size_t shortest = 32;
            if (answer.request == randr(XCB_RANDR_GET_OUTPUT_INFO) &&
                answer.bytes.find(name, shortest) != std::string::npos) {
                answer.bytes[connectionAt] = XCB_RANDR_CONNECTION_DISCONNECTED;
            }
        });
    }

    bool saysConnected(const std::string& name) { return x11::outputNamed(*ask(), name).connected; }

    const std::uint8_t randrOpcode = [this] {
        const support::XConnection direct(desktop.displayName());
        return xcb_get_extension_data(direct.get(), &xcb_randr_id)->major_opcode;
    }();
    std::atomic<bool> losesEvents = false;
    std::mutex mutex;
    std::function<void(Request)> beforeRequest = [](Request) {};
    std::function<void(Answer&)> editAnswer = [](Answer&) {};
    std::vector<Request> requests;
    RequestRelay relay{desktop.displayName(), [this](Request request) { note(request); },
                       [this](Answer& answer) { return pass(answer); }};
    std::unique_ptr<x11::Connection> connection =
        x11::Connection::connect({.displayName = relay.displayName()});
    x11::KeptSnapshot kept{*connection};
    /// More than there are things to ask for in turn.
    static constexpr int aRound = 30;
};

TEST_F(KeptSnapshotTest, AQuestionAboutAnUnchangedLayoutTakesHalfAKilobyte) {
    settle();
    const auto first = ask();

    for (int i = 0; i < aRound; ++i) {
        const std::size_t before = relay.bytes();
        EXPECT_EQ(ask(), first);
        EXPECT_LE(relay.bytes() - before, 512U);
    }
    EXPECT_EQ(*first, truth());
}

TEST_F(KeptSnapshotTest, AQuestionAboutAnUnchangedLayoutTakesOneRoundTrip) {
    settle();
    // All on one thread.
    int open = 0;
    std::atomic<int> roundTrips = 0;
    beforeEachRequest([&](Request) { ++open; });
    editEachAnswer([&](Answer&) { roundTrips += --open == 0 ? 1 : 0; });

    for (int i = 0; i < aRound; ++i) {
        ask();
    }

    EXPECT_EQ(roundTrips, aRound);
}

TEST_F(KeptSnapshotTest, IsReadAgainUntilTwoReadingsAreTheSame) {
    EXPECT_TRUE(readsWhole());
    EXPECT_TRUE(readsWhole());
    EXPECT_FALSE(readsWhole());

    other.switchOff("DUMMY2");

    EXPECT_TRUE(readsWhole());
    EXPECT_TRUE(readsWhole());
    EXPECT_FALSE(readsWhole());
}

TEST_F(KeptSnapshotTest, AnEventIsEnough) {
    settle();
    ASSERT_FALSE(readsWhole());

    // An EDID moves no stamp.
    support::showEdid(desktop.displayName(), "DUMMY1", support::MonitorFacts{.serial = 7});

    EXPECT_TRUE(readsWhole());
    EXPECT_EQ(x11::outputNamed(*ask(), "DUMMY1").edid.serial, 7U);
}

TEST_F(KeptSnapshotTest, LooksForMonitorsWhenTold) {
    settle();
    ASSERT_EQ(countOf(randr(XCB_RANDR_GET_SCREEN_RESOURCES)), 0);

    kept.read(Probing::always);

    EXPECT_EQ(countOf(randr(XCB_RANDR_GET_SCREEN_RESOURCES)), 1);
}

TEST_F(KeptSnapshotTest, AChangeWhoseEventsAreLostIsSeenAtTheNextQuestion) {
    losesEvents = true;
    const std::vector<std::pair<std::string, std::function<void()>>> changes{
        {"off", [&] { other.switchOff("DUMMY2"); }},
        {"on", [&] { other.switchOn("DUMMY2"); }},
        {"another mode", [&] { other.setMode("DUMMY2", "1280x1024"); }},
        {"another place", [&] { other.setPosition("DUMMY2", 4000, 100); }},
        {"another primary", [&] { other.setPrimary("DUMMY1"); }},
        {"a copy", [&] { other.showSameAs("DUMMY1", "DUMMY0"); }},
        {"a larger screen",
         [&] {
             other.run({"--fb", "7000x4000"});
         }},
        {"a monitor plugged in", [&] { other.connect("DUMMY3", 0, 1080); }},
        {"a monitor never seen",
         [&] {
             other.run({"--addmode", "DUMMY9", "1920x1080"});
         }},
        {"all off but one",
         [&] {
             other.switchOff(std::vector<std::string>{"DUMMY1", "DUMMY2", "DUMMY3"});
         }},
    };
    settle();

    for (const auto& [name, change] : changes) {
        change();
        EXPECT_EQ(ask()->layoutTimestamp, truth().layoutTimestamp) << name;
        x11::Snapshot seen = *ask();
        const x11::Snapshot now = truth();
        // That stands in nothing but the event.
        seen.screen.widthInMillimetres = now.screen.widthInMillimetres;
        seen.screen.heightInMillimetres = now.screen.heightInMillimetres;
        EXPECT_EQ(seen, now) << name;
        settle();
    }
}

TEST_F(KeptSnapshotTest, WhatMovesNoStampIsSeenWithinOneRoundThoughItsEventIsLost) {
    losesEvents = true;
    other.run({"--addmode", "DUMMY15", "1920x1080"});
    const std::vector<std::pair<std::string, std::function<void()>>> changes{
        {"another monitor at the same connector",
         [&] {
             support::showEdid(desktop.displayName(), "DUMMY1", support::MonitorFacts{.serial = 7});
         }},
        {"a mode that leaves an output",
         [&] {
             other.run({"--delmode", "DUMMY15", "1920x1080"});
         }},
    };
    settle();

    for (const auto& [name, change] : changes) {
        change();

        const x11::Snapshot now = truth();
        int questions = 1;
        while (*ask() != now && questions < aRound) {
            ++questions;
        }
        EXPECT_LT(questions, aRound) << name;
        settle();
    }
}

TEST_F(KeptSnapshotTest, AMonitorUnpluggedWithoutEventOrStampIsMissedWithinOneRound) {
    settle();
    ASSERT_TRUE(saysConnected("DUMMY1"));

    unplug("DUMMY1");

    const int displaysOn = 3;
    bool isMissed = false;
    for (int i = 0; i < displaysOn && !isMissed; ++i) {
        isMissed = !saysConnected("DUMMY1");
    }
    EXPECT_TRUE(isMissed);
}

TEST_F(KeptSnapshotTest, ALoneMonitorUnpluggedWithoutEventOrStampIsMissedAtOnce) {
    other.switchOff(std::vector<std::string>{"DUMMY1", "DUMMY2"});
    settle();
    ask();

    unplug("DUMMY0");

    EXPECT_FALSE(saysConnected("DUMMY0"));
}

TEST_F(KeptSnapshotTest, AChangeInTheMiddleOfAReadingIsSeenThoughItsEventsAreLost) {
    losesEvents = true;
    bool isOn = true;
    for (const int reading : {1, 2}) {
        for (const int minor : {XCB_RANDR_GET_SCREEN_RESOURCES_CURRENT,
                                XCB_RANDR_GET_CRTC_TRANSFORM, XCB_RANDR_GET_OUTPUT_PROPERTY,
                                XCB_RANDR_GET_MONITORS, XCB_RANDR_GET_OUTPUT_PRIMARY}) {
            SCOPED_TRACE(testing::Message() << "reading " << reading << ", request " << minor);
            settle();
            other.setPosition("DUMMY1", isOn ? 1920 : 2000, 0);
            if (reading == 2) {
                ask();
            }
            std::atomic<bool> isDue = true;
            beforeEachRequest([&](Request request) {
                if (request == randr(static_cast<std::uint8_t>(minor)) && isDue.exchange(false)) {
                    isOn ? other.switchOff("DUMMY2") : other.switchOn("DUMMY2");
                }
            });

            ask();
            beforeEachRequest([](Request) {});

            ASSERT_FALSE(isDue);
            isOn = !isOn;
            EXPECT_EQ(ask()->activeCrtc(x11::outputNamed(*ask(), "DUMMY2")) != nullptr, isOn);
        }
    }
}

TEST_F(KeptSnapshotTest, AServerWithoutAListOfMonitorsIsReadWholeEachTime) {
    editEachAnswer([this](Answer& answer) {
        constexpr std::size_t minorVersionAt = 12;
        if (answer.request == randr(XCB_RANDR_QUERY_VERSION)) {
            answer.bytes[minorVersionAt] = 4;
        }
    });
    const auto older = x11::Connection::connect({.displayName = relay.displayName()});
    ASSERT_TRUE(older->hasRandr());
    x11::KeptSnapshot keptOfOlder(*older);
    keptOfOlder.read(Probing::never);
    keptOfOlder.read(Probing::never);
    const auto before = countOf(randr(XCB_RANDR_GET_SCREEN_RESOURCES_CURRENT));

    EXPECT_EQ(*keptOfOlder.read(Probing::never), truth());

    EXPECT_EQ(countOf(randr(XCB_RANDR_GET_SCREEN_RESOURCES_CURRENT)), before + 1);
    EXPECT_EQ(countOf(randr(XCB_RANDR_GET_MONITORS)), 0);
}

}  // namespace
}  // namespace tavrel
