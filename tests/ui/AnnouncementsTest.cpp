#include <QAccessible>
#include <algorithm>

#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::IsSupersetOf;
using Announcement = std::pair<QObject*, QAccessible::Event>;

/// Notes what assistive technology is told while it exists.
class Announcements {
public:
    Announcements() {
        seen().clear();
        previous_ = QAccessible::installUpdateHandler(&note);
    }
    ~Announcements() { QAccessible::installUpdateHandler(previous_); }
    Announcements(const Announcements&) = delete;
    Announcements& operator=(const Announcements&) = delete;

    static std::vector<Announcement>& seen() {
        static std::vector<Announcement> announcements;
        return announcements;
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
        ASSERT_TRUE(runUntil([] { return QAccessible::isActive(); }));
    }
};

TEST_F(AnnouncementsTest, ANewStatusIsAnnounced) {
    open({builtInDisplay(true)});
    QObject* status = text("Ready");
    const Announcements announcements;

    setStatus("Both displays are on");

    EXPECT_THAT(Announcements::seen(), Contains(Announcement(status, QAccessible::NameChanged)));
}

TEST_F(AnnouncementsTest, ANewErrorIsAnnouncedAsAnAlertOnce) {
    open({builtInDisplay(true)});
    const auto alerts = [] {
        return std::count_if(Announcements::seen().begin(), Announcements::seen().end(),
                             [](const auto& event) { return event.second == QAccessible::Alert; });
    };
    const Announcements announcements;

    setError("Broken");
    QObject* error = text("Broken");
    ASSERT_NE(error, nullptr);
    EXPECT_THAT(Announcements::seen(),
                IsSupersetOf({Announcement(error, QAccessible::Alert),
                              Announcement(error, QAccessible::NameChanged)}));

    setStatus("Something else changes");
    EXPECT_EQ(alerts(), 1);

    setError("Broken again");
    EXPECT_EQ(alerts(), 2);
}

TEST_F(AnnouncementsTest, ARebuildThatChangesNothingAnnouncesNothing) {
    open({builtInDisplay(true), externalDisplay(false)});
    const Announcements announcements;

    setDisplays(controller->displays());

    EXPECT_TRUE(Announcements::seen().empty());
}

TEST_F(AnnouncementsTest, ASwitchThatMovesIsAnnounced) {
    open({builtInDisplay(true), externalDisplay(true)});
    QObject* power = &powerSwitch(1);
    const Announcements announcements;

    setDisplays({builtInDisplay(true), externalDisplay(false)});

    EXPECT_THAT(Announcements::seen(), Contains(Announcement(power, QAccessible::StateChanged)));
}

}  // namespace
}  // namespace tavrel
