#include "tests/support/AppProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <csignal>
#include <optional>
#include <string>

#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppWindow.h"
#include "tests/support/Keyboard.h"
#include "tests/support/Pointer.h"
#include "tests/support/ProcessTable.h"
#include "tests/support/Screenshot.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel::support {
namespace {

/// A toolkit's window on a desktop, read and operated in every way this folder offers.
class AppProcessTest : public testing::Test {
protected:
    AppProcessTest() {
        EXPECT_TRUE(waitUntil([&] { return accessible.find("waiting").has_value(); }));
    }

    AccessibleElement element(const std::string& name) const {
        return accessible.find(name).value_or(AccessibleElement{});
    }

    std::optional<AppWindow> window() const {
        return AppWindow::find(desktop.displayName(), app.pid());
    }

    VirtualDesktop desktop{{.monitors = 1, .accessibility = true}};
    UserHome home;
    AppProcess app{desktop, home, {.program = TEST_WINDOW}};
    AccessibleWindow accessible{desktop.accessibilityBusAddress(), app.pid()};
};

TEST(UserHomeTest, EndsWhatHasLeftItsFamily) {
    std::optional<UserHome> home(std::in_place);
    const std::string entry = "HOME=" + home->path().string();
    {
        const AppProcess starting(*home,
                                  {.program = "setsid", .arguments = {"--fork", "sleep", "600"}});
        ASSERT_TRUE(starting.process().waitForEnd());
        // It leaves the group only after that.
        ASSERT_TRUE(waitUntil([&] { return starting.process().livingGroup().empty(); }));
    }
    ASSERT_EQ(processesWith(entry).size(), 1U);

    home.reset();

    EXPECT_TRUE(processesWith(entry).empty());
}

TEST_F(AppProcessTest, CapturesWhatTheProgramPrints) {
    EXPECT_TRUE(waitUntil([&] { return app.standardOutput() == "shown\n"; }));
}

TEST_F(AppProcessTest, ReadsTextsAndStatesOverTheAccessibilityBus) {
    EXPECT_EQ(element("waiting").role, "label");
    EXPECT_TRUE(element("Press me").isEnabled());
    EXPECT_FALSE(element("Leave me").isEnabled());
    EXPECT_FALSE(element("Tick me").isChecked());
    EXPECT_TRUE(element("Tick me").isShowing());
    EXPECT_FALSE(accessible.find("nothing of this name"));
}

TEST_F(AppProcessTest, ActsWithoutPointerOrKeyboard) {
    EXPECT_TRUE(accessible.act(element("Tick me")));

    EXPECT_TRUE(waitUntil([&] { return element("Tick me").isChecked(); }));
}

TEST_F(AppProcessTest, ClicksWhereTheElementIs) {
    const Bounds bounds = accessible.boundsOf(element("Press me"));

    Pointer(desktop.displayName()).click(bounds.centreX(), bounds.centreY());

    EXPECT_TRUE(waitUntil([&] { return accessible.find("pressed").has_value(); }));
}

TEST_F(AppProcessTest, TypesIntoTheFocusedWindow) {
    window().value().focus();
    const Keyboard keyboard(desktop.displayName());

    ASSERT_TRUE(waitUntil([&] {
        keyboard.tap(key::tab);
        return waitUntil([&] { return element("Tick me").isFocused(); },
                         std::chrono::milliseconds(300));
    }));
    keyboard.tap(key::space);

    EXPECT_TRUE(waitUntil([&] { return element("Tick me").isChecked(); }));
}

TEST_F(AppProcessTest, KnowsTheWindowsSizeAndItsLimits) {
    EXPECT_EQ(window().value().fixedSize(), (Bounds{0, 0, 300, 200}));
    EXPECT_TRUE(window().value().refusesMaximising());
    EXPECT_EQ(window().value().bounds().width, 300);
    EXPECT_TRUE((Bounds{0, 0, 1920, 1080}).contains(window().value().bounds()));
}

TEST_F(AppProcessTest, TakesPicturesOfTheScreen) {
    const auto file = home.path() / "screen.png";
    const Bounds bounds = window().value().bounds();

    saveScreenshot(desktop.displayName(), file);

    const QImage picture(QString::fromStdString(file.string()));
    EXPECT_EQ(picture.size(), QSize(1920, 1080));
    EXPECT_NE(picture.pixel(bounds.x + 5, bounds.y + 5),
              picture.pixel(bounds.x + bounds.width + 5, bounds.y + 5));
}

TEST_F(AppProcessTest, ClosesTheWindowAsAWindowManagerDoes) {
    window().value().close();

    EXPECT_EQ(app.process().waitForEnd(), (ChildProcess::Ending{0, std::nullopt}));
}

TEST_F(AppProcessTest, TellsHowTheProgramEnded) {
    EXPECT_TRUE(app.process().isRunning());

    app.process().signal(SIGKILL);

    EXPECT_EQ(app.process().waitForEnd(), (ChildProcess::Ending{std::nullopt, SIGKILL}));
    EXPECT_THAT(app.process().livingGroup(), testing::IsEmpty());
}

}  // namespace
}  // namespace tavrel::support
