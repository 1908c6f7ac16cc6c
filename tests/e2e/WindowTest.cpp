#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <vector>

#include "tests/e2e/Session.h"
#include "tests/support/Keyboard.h"
#include "tests/support/Pointer.h"
#include "tests/support/XConnection.h"

namespace tavrel::e2e {
namespace {

using support::AccessibleElement;
using support::Bounds;
using support::Keyboard;
using support::waitUntil;
namespace key = support::key;

class WindowTest : public testing::Test {
protected:
    WindowTest() { EXPECT_TRUE(session.says("Found 3 displays")); }

    std::string focused() const {
        for (const AccessibleElement& each : session.accessible().elements()) {
            if (each.isFocused()) {
                return each.name;
            }
        }
        return {};
    }

    /// Presses Tab until the control has the focus, awaiting each time that the focus moves.
    bool tabTo(const Keyboard& keyboard, const std::string& name) const {
        for (int presses = 0; presses < 20; ++presses) {
            const std::string before = focused();
            if (before == name) {
                return true;
            }
            keyboard.tap(key::tab);
            waitUntil([&] { return focused() != before; }, std::chrono::seconds(5));
        }
        return false;
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
    Session session{desktop, home};
};

TEST_F(WindowTest, HasOneSizeAndCannotBeMaximised) {
    const support::AppWindow window = session.topLevel();
    EXPECT_EQ(window.bounds().width, 520);
    EXPECT_EQ(window.bounds().height, 486);
    EXPECT_EQ(window.fixedSize(), (Bounds{0, 0, 520, 486}));
    EXPECT_TRUE(window.refusesMaximising());
}

TEST_F(WindowTest, WhatIsNotPaintedYetIsDarkAsTheDesignIs) {
    const support::XConnection x(desktop.displayName());
    const support::AppWindow window = session.topLevel();

    // As the server does itself where it shows a window before anybody has painted it.
    xcb_clear_area(x.get(), 0, window.id(), 0, 0, 0, 0);

    const support::XcbReply<xcb_get_image_reply_t> image(xcb_get_image_reply(
        x.get(),
        xcb_get_image(x.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window.id(), 0, 0, 520, 486, 0x00FFFFFF),
        nullptr));
    ASSERT_NE(image, nullptr);
    std::vector<std::uint32_t> pixels(std::size_t{520} * 486);
    ASSERT_EQ(xcb_get_image_data_length(image.get()), static_cast<int>(pixels.size() * 4));
    std::memcpy(pixels.data(), xcb_get_image_data(image.get()), pixels.size() * 4);
    EXPECT_THAT(pixels, testing::Each(0x000E121EU));
}

TEST(OpeningWindowTest, IsOnTheDisplayThePointerIsOn) {
    const support::VirtualDesktop desktop({.accessibility = true});
    const support::UserHome home;
    const support::Pointer pointer(desktop.displayName());
    for (const char* name : {"DUMMY2", "DUMMY0"}) {
        const support::Monitor monitor = desktop.monitor(name);
        pointer.moveTo(monitor.x + 100, monitor.y + 900);

        const Session session(desktop, home);

        const Bounds window = session.topLevel().bounds();
        EXPECT_TRUE((Bounds{monitor.x, monitor.y, monitor.width, monitor.height}.contains(window)))
            << name << ": " << window;
    }
}

TEST_F(WindowTest, ClosingItQuitsTheApplication) {
    session.topLevel().close();

    EXPECT_TRUE(session.exitsWith(0));
    EXPECT_EQ(session.application().standardError(), "");
}

TEST_F(WindowTest, TellsAssistiveTechnologyEveryTextAndControl) {
    std::multiset<std::string> texts;
    for (const AccessibleElement& each : session.accessible().elements()) {
        if (each.isShowing() && each.role == "label") {
            texts.insert(each.name);
        }
    }

    for (const char* text : {"Your screens", "External Display 1", "External Display 2",
                             "External Display 3", "Found 3 displays"}) {
        EXPECT_EQ(texts.count(text), 1U) << text;
    }
    EXPECT_EQ(texts.count("External monitor · removed from desktop when off"), 3U);
    for (const char* control :
         {"External Display 1 power", "External Display 2 power", "External Display 3 power"}) {
        EXPECT_EQ(session.element(control).role, "check box") << control;
        EXPECT_TRUE(session.element(control).isChecked()) << control;
        EXPECT_TRUE(session.element(control).isEnabled()) << control;
    }
    EXPECT_EQ(session.element("Refresh displays").role, "push button");
    EXPECT_EQ(session.element("Wake both displays").role, "push button");
}

TEST_F(WindowTest, CanBeUsedByKeyboardAlone) {
    session.topLevel().focus();
    const Keyboard keyboard(desktop.displayName());

    ASSERT_TRUE(tabTo(keyboard, "External Display 2 power")) << focused();
    keyboard.tap(key::space);
    EXPECT_TRUE(session.says("External Display 2 is off"));
    EXPECT_EQ(desktop.monitorsOn(), 2);

    ASSERT_TRUE(tabTo(keyboard, "Wake both displays")) << focused();
    keyboard.tap(key::space);
    EXPECT_TRUE(session.says("Both displays are on"));
    EXPECT_EQ(desktop.monitorsOn(), 3);

    ASSERT_TRUE(tabTo(keyboard, "Refresh displays")) << focused();
    keyboard.tap(key::space);
    EXPECT_TRUE(session.says("Found 3 displays"));
}

TEST_F(WindowTest, CanBeUsedByAssistiveTechnologyAlone) {
    EXPECT_TRUE(session.act("External Display 1 power"));
    EXPECT_TRUE(session.says("External Display 1 is off"));
    EXPECT_EQ(desktop.monitorsOn(), 2);

    EXPECT_TRUE(session.act("External Display 3 power"));
    EXPECT_TRUE(session.says("External Display 3 is off"));
    EXPECT_EQ(session.element("Must stay on").role, "label");
    EXPECT_FALSE(session.element("External Display 2 power").isEnabled());

    EXPECT_TRUE(session.act("Wake both displays"));
    EXPECT_TRUE(session.says("Both displays are on"));
    EXPECT_EQ(desktop.monitorsOn(), 3);

    EXPECT_TRUE(session.act("Refresh displays"));
    EXPECT_TRUE(session.says("Found 3 displays"));
}

}  // namespace
}  // namespace tavrel::e2e
