#include <gmock/gmock.h>

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/e2e/Session.h"
#include "tests/platform/x11/hotkeys/RunXProgram.h"
#include "tests/support/Keyboard.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::e2e {
namespace {

using support::Keyboard;
using support::waitUntil;
namespace key = support::key;

/// The application, installed by itself, with a watchdog that notes what it is asked for.
class NotedRequests {
public:
    NotedRequests() {
        std::filesystem::create_directory(folder_.path() / "libexec");
        std::filesystem::copy_file(e2e::program, program());
        std::filesystem::copy_file(NOTING_WATCHDOG, folder_.path() / "libexec/display-watchdog");
    }

    std::string program() const { return folder_.path() / "tavrel"; }
    support::Environment environment() const { return {{"NOTED_REQUESTS", file()}}; }

    /// The changes that have been asked for, "on" or "off", in order.
    std::vector<std::string> changes() const {
        std::istringstream lines(support::readFile(file()));
        std::vector<std::string> changes;
        std::string display;
        for (std::string change; lines >> change >> display;) {
            changes.push_back(change);
        }
        return changes;
    }

private:
    std::string file() const { return folder_.path() / "requests"; }

    support::TemporaryFolder folder_;
};

class HotKeyTest : public testing::Test {
protected:
    void start() {
        session.emplace(desktop, home);
        ASSERT_TRUE(session->says("Found 3 displays"));
    }

    void switchOneOff() {
        session->act("External Display 2 power");
        ASSERT_TRUE(session->says("External Display 2 is off"));
        ASSERT_EQ(desktop.monitorsOn(), 2);
    }

    void expectAllWoken() const {
        EXPECT_TRUE(session->says("Both displays are on"));
        EXPECT_EQ(desktop.monitorsOn(), 3);
    }

    void pressChord() const {
        Keyboard(desktop.displayName()).chord({key::control, key::alt, key::super, 'w'});
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
    std::optional<Session> session;
};

TEST_F(HotKeyTest, TheHotKeyWakesAllWhileAnotherWindowHasTheFocusWhateverLocksAreOn) {
    start();
    const support::UserHome otherHome;
    support::AppProcess other(desktop, otherHome, {.program = TEST_WINDOW});
    std::optional<support::AppWindow> otherWindow;
    ASSERT_TRUE(waitUntil([&] {
        otherWindow = support::AppWindow::find(desktop.displayName(), other.pid());
        return otherWindow.has_value();
    }));
    otherWindow->focus();

    const Keyboard keyboard(desktop.displayName());
    for (const auto lock : {xcb_keysym_t{0}, key::capsLock, key::numLock}) {
        SCOPED_TRACE(lock);
        if (lock != 0) {
            keyboard.tap(lock);
        }
        switchOneOff();

        pressChord();

        expectAllWoken();
    }
}

TEST_F(HotKeyTest, WhileItsOwnWindowHasTheFocusTheHotKeyWakesOnceNotByTheMenusKeysToo) {
    const NotedRequests requests;
    session.emplace(desktop, home, requests.environment(), requests.program());
    ASSERT_TRUE(session->says("Found 3 displays"));
    session->topLevel().focus();
    switchOneOff();

    pressChord();
    expectAllWoken();
    // Comes to the window after whatever of the chord may come there.
    Keyboard(desktop.displayName()).chord({key::control, 'r'});
    EXPECT_TRUE(session->says("Found 3 displays"));
    switchOneOff();

    EXPECT_THAT(requests.changes(), testing::ElementsAre("off", "on", "on", "on", "off"));
}

TEST_F(HotKeyTest, WhenAnotherProgramHasTheHotKeyEverythingElseWorks) {
    const support::ChordHolder holder(desktop.displayName());

    start();

    switchOneOff();
    EXPECT_EQ(session->application().standardError(), "");
    session->act("Wake both displays");
    expectAllWoken();
}

TEST_F(HotKeyTest, AHotKeyThatAnotherProgramHadWorksAndIsShownToOnceThatIsGone) {
    const auto explanation = [&] {
        return session->accessible().descriptionOf(session->element("Wake both displays"));
    };
    std::optional<support::ChordHolder> holder(std::in_place, desktop.displayName());
    start();
    switchOneOff();
    EXPECT_THAT(explanation(), testing::HasSubstr("another program is using it"));

    holder.reset();
    EXPECT_TRUE(waitUntil([&] { return explanation().empty(); }));
    pressChord();

    expectAllWoken();
}

TEST_F(HotKeyTest, TheHotKeyWakesAllOnAKeyboardWithoutLatinLetters) {
    runXProgram(desktop, {"setxkbmap", "-layout", "ru"});
    constexpr xcb_keysym_t cyrillicTse = 0x06c3;
    start();
    switchOneOff();

    Keyboard(desktop.displayName()).chord({key::control, key::alt, key::super, cyrillicTse});

    expectAllWoken();
}

}  // namespace
}  // namespace tavrel::e2e
