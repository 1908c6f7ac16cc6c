#include "platform/gnome/GnomeReconfigurationReports.h"

#include "tests/platform/gnome/GnomeDesktopTest.h"
#include "tests/platform/x11/ReportRecorder.h"

namespace tavrel {
namespace {

using namespace displayChange;
using support::waitUntil;

class GnomeReconfigurationReportsTest : public GnomeDesktopTest {
protected:
    /// Returns once it has seen how things are: what is switched off is then reported.
    void listen() {
        reports = std::make_unique<GnomeReconfigurationReports>(store, options());
        ASSERT_EQ(reports->registerCallback(&ReportRecorder::callback, &recorder),
                  serverStatus::success);
        auto moved = atFirst;
        ASSERT_TRUE(waitUntil([&] {
            moved[2].y = moved[2].y == 0 ? 10 : 0;
            desktop->apply(moved);
            return waitUntil([&] { return recorder.knows(idOf(right)); },
                             std::chrono::milliseconds(500));
        }));
        recorder.take();
    }

    ReportRecorder recorder;
    std::unique_ptr<GnomeReconfigurationReports> reports;
};

TEST_F(GnomeReconfigurationReportsTest, TellWhoWentOffAndOnWhoeverDidIt) {
    listen();

    ASSERT_EQ(off(middle), serverStatus::success);
    EXPECT_TRUE(waitUntil([&] { return recorder.contains({idOf(middle), disabled}); }));

    auto all = atFirst;
    desktop->apply(all);
    EXPECT_TRUE(waitUntil([&] { return recorder.contains({idOf(middle), enabled}); }));
}

TEST_F(GnomeReconfigurationReportsTest, TellWhatChangedWhileTheCompositorWasGone) {
    listen();
    const DisplayID display = idOf(middle);
    ASSERT_EQ(off(middle), serverStatus::success);
    ASSERT_TRUE(waitUntil([&] { return recorder.contains({display, disabled}); }));

    desktop->kill();
    desktop->start();

    EXPECT_TRUE(waitUntil([&] { return recorder.contains({display, enabled}); }));
}

TEST_F(GnomeReconfigurationReportsTest, HaveOneCallbackAtATime) {
    listen();

    EXPECT_EQ(reports->registerCallback(&ReportRecorder::callback, nullptr),
              serverStatus::cannotComplete);
    EXPECT_EQ(reports->removeCallback(&ReportRecorder::callback, nullptr),
              serverStatus::illegalArgument);
    EXPECT_EQ(reports->removeCallback(&ReportRecorder::callback, &recorder), serverStatus::success);
    ASSERT_EQ(off(middle), serverStatus::success);
    EXPECT_FALSE(recorder.knows(idOf(middle)));
}

}  // namespace
}  // namespace tavrel
