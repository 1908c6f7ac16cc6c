#include <gmock/gmock.h>

#include <optional>

#include "tests/e2e/Session.h"
#include "tests/support/DBus.h"
#include "tests/support/TrayWatcher.h"

/// The application in a desktop's tray, used over the bus as a panel does it.
namespace tavrel::e2e {
namespace {

using support::TrayWatcher;
using support::Variant;
using support::waitUntil;

class TrayTest : public testing::Test {
protected:
    TrayTest() {
        EXPECT_TRUE(session.says("Found 3 displays"));
        EXPECT_TRUE(waitUntil([&] { return watcher->icons().size() == 1; }));
    }

    std::string icon() const { return watcher->icons().back(); }

    /// A property of the icon, as text.
    std::string shown(const char* property) const {
        const Variant value =
            bus.property(icon(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", property);
        const std::unique_ptr<char, decltype(&g_free)> text(g_variant_print(value.get(), FALSE),
                                                            &g_free);
        return text.get();
    }

    void pressIcon() const {
        bus.call(icon(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
                 g_variant_new("(ii)", 0, 0));
    }

    /// Chooses the entry with this title from the icon's menu.
    void choose(const std::string& title) const {
        const Variant path =
            bus.property(icon(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Menu");
        const std::string menu = g_variant_get_string(path.get(), nullptr);
        const Variant layout = bus.call(icon(), menu, "com.canonical.dbusmenu", "GetLayout",
                                        g_variant_new_parsed("(0, 1, @as [])"));
        const Variant entries(g_variant_get_child_value(
            Variant(g_variant_get_child_value(layout.get(), 1)).get(), 2));
        for (gsize i = 0; i < g_variant_n_children(entries.get()); ++i) {
            const Variant boxed(g_variant_get_child_value(entries.get(), i));
            const Variant entry(g_variant_get_variant(boxed.get()));
            const Variant properties(g_variant_get_child_value(entry.get(), 1));
            const char* label = nullptr;
            g_variant_lookup(properties.get(), "label", "&s", &label);
            if (label != nullptr && title == label) {
                const Variant number(g_variant_get_child_value(entry.get(), 0));
                bus.call(icon(), menu, "com.canonical.dbusmenu", "Event",
                         g_variant_new_parsed("(%i, 'clicked', <0>, @u 0)",
                                              g_variant_get_int32(number.get())));
                return;
            }
        }
        ADD_FAILURE() << "the menu has no " << title;
    }

    bool isShown() const {
        return support::AppWindow::find(desktop.displayName(), pid).has_value();
    }

    void close() const {
        session.topLevel().close();
        ASSERT_TRUE(waitUntil([&] { return !isShown(); }));
    }

    void switchOneOff() {
        session.act("External Display 2 power");
        ASSERT_TRUE(session.says("External Display 2 is off"));
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    const support::DBus bus{desktop.sessionBusAddress()};
    std::optional<TrayWatcher> watcher{std::in_place, desktop.sessionBusAddress()};
    support::UserHome home;
    // The toolkit's tray leaves an object behind at the end.
    Session session{desktop, home, support::Environment{{"LSAN_OPTIONS", "detect_leaks=0"}}};
    const pid_t pid = session.application().pid();
};

TEST_F(TrayTest, ClosingTheWindowLeavesTheApplicationAndWhatIsOffAlone) {
    switchOneOff();

    close();
    pressIcon();

    EXPECT_TRUE(waitUntil([&] { return isShown(); }));
    EXPECT_EQ(desktop.monitorsOn(), 2);
}

TEST_F(TrayTest, TheMenuShowsWakesRefreshesAndQuitsWhileTheWindowIsClosed) {
    switchOneOff();
    close();

    choose("Wake Both Displays");
    EXPECT_TRUE(waitUntil([&] { return desktop.monitorsOn() == 3; }));
    choose("Show");
    EXPECT_TRUE(waitUntil([&] { return isShown(); }));
    EXPECT_TRUE(session.says("Both displays are on"));
    choose("Refresh");
    EXPECT_TRUE(session.says("Found 3 displays"));
    switchOneOff();
    close();
    choose("Quit");

    EXPECT_TRUE(session.exitsWith(0));
    EXPECT_EQ(desktop.monitorsOn(), 3);
    EXPECT_EQ(session.application().standardError(), "");
}

TEST_F(TrayTest, TheIconTellsWhetherSomethingIsOff) {
    EXPECT_TRUE(waitUntil(
        [&] { return shown("ToolTip").find("All displays are on") != std::string::npos; }));
    const std::string allOn = shown("IconPixmap");

    switchOneOff();
    EXPECT_TRUE(waitUntil([&] { return shown("IconPixmap") != allOn; }));
    EXPECT_THAT(shown("ToolTip"), testing::HasSubstr("Some displays are off"));

    session.act("Wake both displays");
    EXPECT_TRUE(waitUntil([&] { return shown("IconPixmap") == allOn; }));
}

TEST_F(TrayTest, WhenTheTrayGoesTheWindowComesBackAndClosingItEndsTheApplication) {
    close();

    watcher.reset();

    EXPECT_TRUE(waitUntil([&] { return isShown(); }));
    session.topLevel().close();
    EXPECT_TRUE(session.exitsWith(0));
}

TEST_F(TrayTest, ATrayThatComesBackHasTheIconAgain) {
    const std::string iconBefore = icon();
    watcher.reset();
    watcher.emplace(desktop.sessionBusAddress());

    // The toolkit may register the old icon once more, before we have heard of the new watcher.
    EXPECT_TRUE(waitUntil([&] { return !watcher->icons().empty() && icon() != iconBefore; }));
    close();
    pressIcon();
    EXPECT_TRUE(waitUntil([&] { return isShown(); }));
}

TEST_F(TrayTest, AWatcherForWhomNobodyShowsIconsIsNoTray) {
    close();

    watcher->setHost(false);

    EXPECT_TRUE(waitUntil([&] { return isShown(); }));
}

}  // namespace
}  // namespace tavrel::e2e
