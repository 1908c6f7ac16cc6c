#include <QAccessible>
#include <algorithm>

#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::IsSupersetOf;

/// Notes what assistive technology is told while it lives.
class Announcements {
public:
    Announcements() {
        seen().clear();
        previous_ = QAccessible::installUpdateHandler(&note);
    }
    ~Announcements() { QAccessible::installUpdateHandler(previous_); }
    Announcements(const Announcements&) = delete;
    Announcements& operator=(const Announcements&) = delete;

    static std::vector<std::pair<QObject*, QAccessible::Event>>& seen() {
        static std::vector<std::pair<QObject*, QAccessible::Event>> events;
        return events;
    }

private:
    static void note(QAccessibleEvent* event) {
        seen().emplace_back(event->object(), event->type());
    }

    QAccessible::UpdateHandler previous_;
};

/// Toolkits announce nothing unless somebody listens, and there is nobody to listen
/// without a desktop session: these tests run in one.
class AnnouncementsTest : public ViewTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(waitFor([] { return QAccessible::isActive(); }));
    }
};

TEST_F(AnnouncementsTest, ANewStatusIsAnnounced) {
    open({builtInDisplay(true)});
    Label* status = text("Ready");
    const Announcements announcements;
    controller->setStatusMessage("Both displays are on");
    turn();
    EXPECT_THAT(Announcements::seen(), Contains(std::pair<QObject*, QAccessible::Event>(
                                           status, QAccessible::NameChanged)));
}

TEST_F(AnnouncementsTest, ANewErrorIsAnnouncedAsAnAlertOnce) {
    open({builtInDisplay(true)});
    const auto alerts = [] {
        return std::count_if(Announcements::seen().begin(), Announcements::seen().end(),
                             [](const auto& event) { return event.second == QAccessible::Alert; });
    };
    const Announcements announcements;
    controller->setErrorMessage("Broken");
    turn();
    Label* error = text("Broken");
    ASSERT_NE(error, nullptr);
    EXPECT_THAT(
        Announcements::seen(),
        IsSupersetOf({std::pair<QObject*, QAccessible::Event>(error, QAccessible::Alert),
                      std::pair<QObject*, QAccessible::Event>(error, QAccessible::NameChanged)}));
    controller->setStatusMessage("Something else changes");
    turn();
    EXPECT_EQ(alerts(), 1);
    controller->setErrorMessage("Broken again");
    turn();
    EXPECT_EQ(alerts(), 2);
}

TEST_F(AnnouncementsTest, ARebuildThatChangesNothingAnnouncesNothing) {
    open({builtInDisplay(true), externalDisplay(false)});
    const Announcements announcements;
    controller->setDisplays(controller->displays());
    turn();
    EXPECT_TRUE(Announcements::seen().empty());
}

TEST_F(AnnouncementsTest, ASwitchThatMovesIsAnnounced) {
    open({builtInDisplay(true), externalDisplay(true)});
    Switch* power = &powerSwitch(1);
    const Announcements announcements;
    controller->setDisplays({builtInDisplay(true), externalDisplay(false)});
    turn();
    EXPECT_THAT(Announcements::seen(), Contains(std::pair<QObject*, QAccessible::Event>(
                                           power, QAccessible::StateChanged)));
}

}  // namespace
}  // namespace tavrel
