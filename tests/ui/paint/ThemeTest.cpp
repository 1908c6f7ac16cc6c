#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QMenuBar>
#include <QToolTip>

#include <gtest/gtest.h>

#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

TEST(ThemeTest, InstalledFontsAreUsed) {
    if (QFontDatabase::hasFamily("Quicksand")) {
        const QFont font = theme::font({27, QFont::Bold, theme::FontDesign::rounded}, 2);
        EXPECT_EQ(QFontInfo(font).family(), "Quicksand");
    }
    if (QFontDatabase::hasFamily("Inter")) {
        EXPECT_EQ(QFontInfo(theme::font({14, QFont::Medium}, 2)).family(), "Inter");
    }
    const QFont fixed = theme::font({11.5, QFont::DemiBold, theme::FontDesign::monospaced}, 2);
    EXPECT_TRUE(QFontInfo(fixed).fixedPitch());
    EXPECT_EQ(fixed.pixelSize(), 23);
    EXPECT_EQ(fixed.weight(), QFont::DemiBold);
}

TEST(ThemeTest, TheWholeApplicationIsDark) {
    theme::applyTo(*qApp);
    for (const QPalette& palette : {QApplication::palette(), QToolTip::palette()}) {
        for (const QPalette::ColorRole ground :
             {QPalette::Window, QPalette::Base, QPalette::Button, QPalette::ToolTipBase}) {
            EXPECT_LT(palette.color(ground).lightness(), 64) << ground;
        }
        for (const QPalette::ColorRole ink :
             {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
            EXPECT_GT(palette.color(ink).lightness(), 200) << ink;
        }
    }
}

TEST(ThemeTest, TheMenuBarFitsIntoItsStripAndLetsTheBackdropThrough) {
    QWidget window;
    window.resize(520, 100);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(14, 18, 30));
    window.setPalette(palette);
    QMenuBar bar(&window);
    bar.setStyleSheet(theme::menuBarStyleSheet());
    bar.addMenu("Displays");
    EXPECT_LE(bar.sizeHint().height(), theme::menuBarHeight);
    bar.setGeometry(0, 0, 520, theme::menuBarHeight);
    EXPECT_EQ(window.grab().toImage().pixelColor(500, 14), QColor(14, 18, 30));
}

}  // namespace
}  // namespace tavrel
