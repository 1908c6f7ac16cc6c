#include "platform/dbus/DBusApplication.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "tests/support/DBus.h"
#include "tests/support/MessageBus.h"
#include "tests/support/SilentSocket.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel {
namespace {

using std::chrono::milliseconds;
using Standing = DBusApplication::Standing;
using testing::ElementsAre;

constexpr milliseconds never = support::defaultTimeout;
constexpr milliseconds atOnce{0};

/// A copy of the application, and what was asked of it.
class Copy {
public:
    explicit Copy(const std::string& address, DBusApplication::Timeouts timeouts = patient,
                  const dbus::ApplicationConversation::Invitation& invitation = {})
        : application(address, {.id = "org.example.App", .actions = {"wake", "refresh"}},
                      invitation, timeouts) {}

    /// Serves calls; answers each, or none.
    void serve(bool answers = true) {
        application.serve([this, answers](const DBusApplication::Call& call) {
            {
                const std::lock_guard lock(mutex);
                seen.push_back(call.action + "/" + call.activationToken);
            }
            if (answers) {
                application.answered(call);
            }
        });
    }

    std::vector<std::string> calls() const {
        const std::lock_guard lock(mutex);
        return seen;
    }

    static constexpr DBusApplication::Timeouts patient{never, never, atOnce};

    mutable std::mutex mutex;
    std::vector<std::string> seen;
    DBusApplication application;
};

class DBusApplicationTest : public testing::Test {
protected:
    void startBus() { bus.emplace(folder.path(), "session", janitor); }

    void call(const char* method, GVariant* arguments) const {
        support::DBus(address).call("org.example.App", "/org/example/App",
                                    "org.freedesktop.Application", method, arguments);
    }

    void callAction(const char* action) const {
        call("ActivateAction",
             g_variant_new("(s@av@a{sv})", action,
                           g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0),
                           g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0)));
    }

    support::TemporaryFolder folder;
    support::Janitor janitor{folder.path()};
    const std::string address = "unix:path=" + (folder.path() / "session").string();
    std::optional<support::MessageBus> bus;
};

TEST_F(DBusApplicationTest, TheSecondCallsTheFirstToTheFrontAndHandsItsTokenOn) {
    startBus();
    Copy first(address);
    EXPECT_EQ(first.application.awaitStanding(), Standing::first);
    first.serve();

    Copy second(address, Copy::patient, {.activationToken = "token", .startupId = "id"});

    EXPECT_EQ(second.application.awaitStanding(), Standing::second);
    EXPECT_THAT(first.calls(), ElementsAre("/token"));
}

TEST_F(DBusApplicationTest, AStartupIdStandsInForAToken) {
    startBus();
    Copy first(address);
    EXPECT_EQ(first.application.awaitStanding(), Standing::first);
    first.serve();

    Copy second(address, Copy::patient, {.activationToken = "", .startupId = "id"});

    EXPECT_EQ(second.application.awaitStanding(), Standing::second);
    EXPECT_THAT(first.calls(), ElementsAre("/id"));
}

TEST_F(DBusApplicationTest, KnownActionsArriveAndOthersAreRefused) {
    startBus();
    Copy copy(address);
    EXPECT_EQ(copy.application.awaitStanding(), Standing::first);
    copy.serve();

    callAction("wake");
    callAction("refresh");
    EXPECT_THROW(callAction("destroy"), support::DBusError);
    EXPECT_THROW(callAction(""), support::DBusError);

    EXPECT_THAT(copy.calls(), ElementsAre("wake/", "refresh/"));
}

TEST_F(DBusApplicationTest, PlatformDataOfUnexpectedTypesIsPassedOver) {
    startBus();
    Copy copy(address);
    EXPECT_EQ(copy.application.awaitStanding(), Standing::first);
    copy.serve();

    const char* data =
        "({'desktop-startup-id': <7>, 'other': <(1, 'x')>, 'activation-token': <'good'>},)";
    call("Activate", g_variant_new_parsed(data));

    EXPECT_THAT(copy.calls(), ElementsAre("/good"));
}

TEST_F(DBusApplicationTest, ACopyThatHangsLeavesTheSecondUnsettledAndItsNameToItAtTheEnd) {
    startBus();
    std::optional<Copy> hanging(std::in_place, address);
    EXPECT_EQ(hanging->application.awaitStanding(), Standing::first);
    hanging->serve(/*answers=*/false);

    Copy second(address, {.bus = never, .other = milliseconds(1), .start = atOnce});
    EXPECT_EQ(second.application.awaitStanding(), Standing::unsettled);
    second.serve();
    hanging.reset();

    Copy third(address);
    EXPECT_EQ(third.application.awaitStanding(), Standing::second);
    EXPECT_THAT(second.calls(), ElementsAre("/"));
}

TEST_F(DBusApplicationTest, ACopyThatIsStillStartingAnswersAtOnceAndActsLater) {
    startBus();
    Copy starting(address, {.bus = never, .other = never, .start = never});
    EXPECT_EQ(starting.application.awaitStanding(), Standing::first);

    Copy second(address);
    EXPECT_EQ(second.application.awaitStanding(), Standing::second);

    EXPECT_THAT(starting.calls(), ElementsAre());
    starting.serve();
    EXPECT_THAT(starting.calls(), ElementsAre("/"));
}

TEST_F(DBusApplicationTest, ACopyThatStartsForTooLongCountsAsHanging) {
    startBus();
    Copy starting(address, {.bus = never, .other = never, .start = atOnce});
    EXPECT_EQ(starting.application.awaitStanding(), Standing::first);

    Copy second(address, {.bus = never, .other = milliseconds(1), .start = atOnce});

    EXPECT_EQ(second.application.awaitStanding(), Standing::unsettled);
}

TEST_F(DBusApplicationTest, ACopyThatEndsInsteadOfAnsweringMakesTheSecondTheFirst) {
    startBus();
    auto ending = std::make_unique<Copy>(address);
    EXPECT_EQ(ending->application.awaitStanding(), Standing::first);
    std::thread end;
    ending->application.serve(
        [&](const DBusApplication::Call&) { end = std::thread([&] { ending.reset(); }); });

    Copy second(address);

    EXPECT_EQ(second.application.awaitStanding(), Standing::first);
    end.join();
}

TEST_F(DBusApplicationTest, WithoutABusNothingIsSettledAndNobodyWaits) {
    Copy copy(address);
    EXPECT_EQ(copy.application.awaitStanding(), Standing::unsettled);

    Copy withoutAddress("");
    EXPECT_EQ(withoutAddress.application.awaitStanding(), Standing::unsettled);
}

TEST_F(DBusApplicationTest, ABusThatHangsIsGivenUp) {
    support::SilentSocket socket(folder.path() / "session");
    Copy copy(address, {.bus = milliseconds(1), .other = never, .start = atOnce});
    socket.awaitClient();

    EXPECT_EQ(copy.application.awaitStanding(), Standing::unsettled);
}

TEST_F(DBusApplicationTest, ABusThatComesBackKnowsTheApplicationAgain) {
    startBus();
    Copy copy(address);
    EXPECT_EQ(copy.application.awaitStanding(), Standing::first);
    copy.serve();
    bus.reset();
    startBus();

    EXPECT_TRUE(support::waitUntil([&] {
        try {
            callAction("wake");
            return true;
        } catch (const support::DBusError&) {
            return false;
        }
    }));

    EXPECT_THAT(copy.calls(), ElementsAre("wake/"));
}

}  // namespace
}  // namespace tavrel
