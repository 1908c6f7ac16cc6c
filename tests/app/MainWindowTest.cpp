#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QTest>

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/support/WakeChord.h"
#include "ui/DisplayControlView.h"
#include "ui/controls/WakeButton.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::Pair;

class MainWindowTest : public testing::Test {
protected:
    MainWindowTest() {
        system.windowServer.connect({.id = 5, .builtIn = true});
        controller = DisplayController::create(system.platform());
        system.scheduler.settle();
        open();
    }

    /// Shown before it is filled, as at a start.
    void open() {
        window.emplace();
        window->show();
        window->fill(controller, system.hotKeys);
        window->reveal({});
    }

    /// The window's, or the one that all windows share.
    static QMenuBar& menuBar() {
        for (QWidget* each : QApplication::allWidgets()) {
            if (auto* bar = qobject_cast<QMenuBar*>(each)) {
                return *bar;
            }
        }
        throw std::out_of_range("no menu bar");
    }

    QAction& action(const QString& title) {
        for (QAction* each : menuBar().findChildren<QAction*>()) {
            if (each->text() == title) {
                return *each;
            }
        }
        throw std::out_of_range(title.toStdString());
    }

    static std::vector<std::string> titles(const QList<QAction*>& actions) {
        std::vector<std::string> result;
        for (const QAction* each : actions) {
            result.push_back(each->text().toStdString());
        }
        return result;
    }

    SimulatedPlatform system;
    std::shared_ptr<DisplayController> controller;
    std::optional<MainWindow> window;
};

TEST_F(MainWindowTest, AMacsStandardMenusCloseAndMinimizeTheWindowAndOpenNoOther) {
    QMenuBar standard;
    addMacFileMenu(standard, *window);
    addMacWindowMenu(standard, *window);
    const QList<QAction*> file = standard.actions().at(0)->menu()->actions();
    const QList<QAction*> menu = standard.actions().at(1)->menu()->actions();
    ASSERT_THAT(titles(standard.actions()), ElementsAre("File", "Window"));
    ASSERT_THAT(titles(file), ElementsAre("Close"));
    ASSERT_THAT(titles(menu), ElementsAre("Minimize", "Zoom"));
    EXPECT_EQ(file.at(0)->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_W));
    EXPECT_EQ(menu.at(0)->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_M));
    EXPECT_FALSE(menu.at(1)->isEnabled());

    menu.at(0)->trigger();
    EXPECT_TRUE(window->isMinimized());

    window->showNormal();
    file.at(0)->trigger();
    EXPECT_FALSE(window->isVisible());

    menu.at(0)->trigger();
    EXPECT_FALSE(window->isVisible()) << "minimizing does not show it again";
}

TEST_F(MainWindowTest, TheWindowsSizeIsFixed) {
    EXPECT_EQ(window->size(), QSize(520, 486));
    EXPECT_EQ(window->minimumSize(), window->maximumSize());

    window->resize(800, 800);

    EXPECT_EQ(window->size(), QSize(520, 486));
    EXPECT_FALSE(window->windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
}

TEST_F(MainWindowTest, TheViewFillsTheWindow) {
    const auto* view = window->findChild<DisplayControlView*>();

    EXPECT_EQ(view->geometry(), window->rect());
    EXPECT_TRUE(view->isVisible()) << "also when the window was shown before";
}

#ifndef Q_OS_MACOS
TEST_F(MainWindowTest, TheMenuBarShowsInTheStripAboveTheHeader) {
    EXPECT_EQ(menuBar().geometry(), QRect(0, 0, 520, 28));
    ASSERT_TRUE(menuBar().isVisible());
    const QImage whole = window->grab().toImage();
    menuBar().hide();
    const QImage without = window->grab().toImage();
    const QRect strip(0, 0, 520 * whole.width() / 520, 28 * whole.width() / 520);
    EXPECT_NE(whole.copy(strip), without.copy(strip));
}

TEST_F(MainWindowTest, TheMenusStepAsideForTheTitleOfFourDisplaysAndBackAgain) {
    auto* view = window->findChild<DisplayControlView*>();
    const QRect inStrip = menuBar().geometry();
    const auto showAll = [&] {
        controller->refresh(std::nullopt);
        system.scheduler.settle();
        QTest::qWait(0);
    };

    for (const DisplayID id : {6U, 7U, 8U}) {
        system.windowServer.connect({.id = id});
    }
    showAll();

    ASSERT_EQ(controller->displays().size(), 4U);
    EXPECT_EQ(menuBar().geometry(), view->menuStrip());
    EXPECT_GT(menuBar().geometry().left(), inStrip.left());
    EXPECT_FALSE(view->findChild<RowList*>()->verticalScrollBar()->isVisible());

    controller->setDisplays({controller->displays().front()});
    QTest::qWait(0);

    EXPECT_EQ(menuBar().geometry(), inStrip);
}
#endif

TEST_F(MainWindowTest, TheDisplaysMenuHasItsTwoCommandsWithTheirKeys) {
    EXPECT_THAT(titles(action("Displays").menu()->actions()),
                ElementsAre("Wake Both Displays", "Refresh Displays"));
    EXPECT_EQ(action("Wake Both Displays").shortcut(),
              QKeySequence(Qt::CTRL | Qt::ALT | Qt::META | Qt::Key_W));
    EXPECT_EQ(action("Refresh Displays").shortcut(), QKeySequence(Qt::CTRL | Qt::Key_R));
}

TEST_F(MainWindowTest, NoMenuOffersAnotherWindow) {
#ifdef Q_OS_MACOS
    EXPECT_THAT(titles(menuBar().actions()), ElementsAre("File", "Displays", "Window"));
#else
    EXPECT_THAT(titles(menuBar().actions()), ElementsAre("File", "Displays"));
    EXPECT_THAT(titles(action("File").menu()->actions()), ElementsAre("Quit"));
#endif
}

#ifndef Q_OS_MACOS
TEST_F(MainWindowTest, AHotKeyThatIsNotHeldIsDimmedAndExplainedForAsLongAsThatLasts) {
    auto* wakeButton = window->findChild<WakeButton*>();
    const auto whatIsShown = [&] {
        return std::pair(wakeButton->findChild<Label*>()->color(),
                         wakeButton->toolTip().toStdString());
    };
    const std::string explanation =
        "⌃⌥⌘W doesn’t work at the moment: another program is using it, or this keyboard lacks one "
        "of its keys";
    EXPECT_EQ(whatIsShown(), std::pair(theme::white(0.24), explanation)) << "never registered";

    const auto chord = system.hotKeys.registerHotKey(support::wakeChord);
    open();
    wakeButton = window->findChild<WakeButton*>();
    EXPECT_EQ(whatIsShown(), std::pair(theme::white(0.48), std::string()));

    system.hotKeys.setTaken(true);
    EXPECT_EQ(whatIsShown(), std::pair(theme::white(0.24), explanation));

    system.hotKeys.setTaken(false);
    EXPECT_EQ(whatIsShown(), std::pair(theme::white(0.48), std::string()));
}

TEST_F(MainWindowTest, WhatTheDesktopBindsIsShownAsSoonAsThatIsKnown) {
    const auto chord = system.hotKeys.registerHotKey(support::wakeChord);
    const auto hint = [&] {
        return window->findChild<WakeButton*>()->findChild<Label*>()->text().toStdString();
    };
    EXPECT_EQ(hint(), "⌃⌥⌘W");

    system.hotKeys.bindInstead(" Super+\nF9 ");
    EXPECT_EQ(hint(), "Super+ F9");

    system.hotKeys.bindInstead("");
    EXPECT_EQ(hint(), "⌃⌥⌘W");
    EXPECT_THAT(window->findChild<WakeButton*>()->toolTip().toStdString(),
                testing::HasSubstr("gapplication action"));
}
#endif

TEST_F(MainWindowTest, WakeBothDisplaysWakesOnceWithoutTheNotification) {
    system.windowServer.takeChanges();

    action("Wake Both Displays").trigger();

    EXPECT_EQ(system.scheduler.pendingMainTasks(), 0U);
    system.scheduler.settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(5, true)));
}

TEST_F(MainWindowTest, WithTheChordTakenItsKeysInTheWindowAndTheMenuWakeOnceEach) {
    system.hotKeys.setAcceptsHotKey(false);
    AppDelegate delegate(system.platform(), system.hotKeys);
    delegate.applicationDidFinishLaunching();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&*window));
    system.windowServer.takeChanges();

    QTest::keyClick(window->windowHandle(), Qt::Key_W,
                    Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    system.scheduler.settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(5, true)));

    action("Wake Both Displays").trigger();
    system.scheduler.settle();
    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(5, true)));
}

TEST_F(MainWindowTest, RefreshDisplaysIsIgnoredWhileARefreshIsRunning) {
    const std::size_t writes = system.userDefaults.writes();

    action("Refresh Displays").trigger();
    EXPECT_TRUE(controller->isRefreshing());
    action("Refresh Displays").trigger();
    system.scheduler.settle();

    EXPECT_EQ(system.userDefaults.writes(), writes + 1);
}

}  // namespace
}  // namespace tavrel
