#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <optional>

#include "tests/e2e/Activation.h"
#include "tests/scenario/GnomeStage.h"
#include "tests/support/GnomeKeyboard.h"
#include "tests/support/LauncherWindow.h"

/// The application among the others on a GNOME desktop.
namespace tavrel::e2e {
namespace {

using support::waitUntil;

class GnomeCitizenTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::GnomeDesktop::isInstalled()) {
            GTEST_SKIP() << "mutter is not installed";
        }
        stage.emplace(TAVREL_PROGRAM);
        ASSERT_TRUE(waitUntil([&] { return Activation(*stage).hasFocus(); }));
        keyboard.emplace(stage->desktop().busAddress());
        launcher.emplace(stage->desktop().displayName());
        // This compositor lets only a window hand on its focus that its user has just used. Keys
        // go elsewhere until it has the keyboard.
        ASSERT_TRUE(waitUntil([&] {
            keyboard->tap(KEY_ENTER);
            return launcher->lastKey() == KEY_ENTER;
        }));
        // What the user did before the last key is worth nothing any more, so none may still
        // be under way. They come in order.
        keyboard->tap(KEY_SPACE);
        ASSERT_TRUE(waitUntil([&] { return launcher->lastKey() == KEY_SPACE; }));
        ASSERT_TRUE(waitUntil([&] { return !Activation(*stage).hasFocus(); }));
    }

    std::optional<scenario::GnomeStage> stage;
    std::optional<support::GnomeKeyboard> keyboard;
    std::optional<support::LauncherWindow> launcher;
};

TEST_F(GnomeCitizenTest, WhoeverIsStartedAgainGetsTheFocusOfItsStarter) {
    const Activation application(*stage);

    EXPECT_TRUE(application.startAgain(launcher->newActivationToken()));

    EXPECT_TRUE(waitUntil([&] { return application.hasFocus() && !launcher->isActive(); }));
}

TEST_F(GnomeCitizenTest, WhoeverIsLaunchedGetsTheFocusOfTheLauncher) {
    const Activation application(*stage);

    application.launch(launcher->newActivationToken());

    EXPECT_TRUE(waitUntil([&] { return application.hasFocus() && !launcher->isActive(); }));
}

}  // namespace
}  // namespace tavrel::e2e
