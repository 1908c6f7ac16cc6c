#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QMenuBar>
#include <QToolTip>

#include <gtest/gtest.h>

#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

TEST(ThemeTest, TheFontsOfTheDesignAreUsedWhereTheyAreInstalled) {
    const QFont rounded = theme::font({27, QFont::Bold, theme::FontDesign::rounded}, 2);
    const QFont standard = theme::font({14, QFont::Medium}, 2);
    const QFont fixed = theme::font({11.5, QFont::DemiBold, theme::FontDesign::monospaced}, 2);

    if (QFontDatabase::hasFamily("Quicksand")) {
        EXPECT_EQ(QFontInfo(rounded).family(), "Quicksand");
    }
#ifdef Q_OS_MACOS
    EXPECT_NE(QFontInfo(standard).family(), "Inter");
#else
    if (QFontDatabase::hasFamily("Inter")) {
        EXPECT_EQ(QFontInfo(standard).family(), "Inter");
    }
#endif
    EXPECT_TRUE(QFontInfo(fixed).fixedPitch());
    EXPECT_EQ(fixed.pixelSize(), 23);
    EXPECT_EQ(fixed.weight(), QFont::DemiBold);
}

TEST(ThemeTest, TheWholeApplicationIsLightTextOnDarkGround) {
    theme::applyTo(*qApp);

    for (const QPalette& palette : {QApplication::palette(), QToolTip::palette()}) {
        for (const auto ground :
             {QPalette::Window, QPalette::Base, QPalette::Button, QPalette::ToolTipBase}) {
            EXPECT_LT(palette.color(ground).lightness(), 64) << ground;
        }
        for (const auto text :
             {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
            EXPECT_GT(palette.color(text).lightness(), 200) << text;
        }
    }
}

TEST(ThemeTest, TheMenuBarFitsIntoItsStripAndLetsTheBackdropThrough) {
    const QColor ground(14, 18, 30);
    QWidget window;
    window.resize(520, 100);
    window.setPalette(QPalette(ground));
    QMenuBar bar(&window);
    bar.setStyleSheet(theme::menuBarStyleSheet());
    bar.addMenu("Displays");
    bar.setGeometry(0, 0, 520, theme::menuBarHeight);

    EXPECT_LE(bar.sizeHint().height(), theme::menuBarHeight);
    EXPECT_EQ(window.grab().toImage().pixelColor(500, 14), ground);
}

}  // namespace
}  // namespace tavrel
