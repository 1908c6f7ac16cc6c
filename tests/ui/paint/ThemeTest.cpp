#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGlyphRun>
#include <QMenuBar>
#include <QRawFont>
#include <QTextLayout>
#include <QToolTip>

#include <gtest/gtest.h>

#include <set>

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

/// How many fonts it takes to draw `text`.
std::size_t fontsFor(const QString& text, const theme::FontSpec& spec) {
    QTextLayout layout(text, theme::font(spec, 2));
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    std::set<QString> fonts;
    for (const QGlyphRun& run : layout.glyphRuns()) {
        fonts.insert(run.rawFont().familyName() + run.rawFont().styleName());
    }
    return fonts.size();
}

TEST(ThemeTest, AShortcutsSignsAreDrawnInOneFont) {
    const theme::FontSpec fixed{11.5, QFont::DemiBold, theme::FontDesign::monospaced};
    const QString signs = QStringLiteral("⌃⌥⌘W");
    if (!QFontDatabase::hasFamily("Inter")) {
        GTEST_SKIP() << "no font of the design is installed that has these signs";
    }
    const theme::FontSpec theDesigns{11.5, QFont::DemiBold, theme::FontDesign::rounded};
    ASSERT_GT(fontsFor(signs, theDesigns), 1U) << "or this would show nothing";

    EXPECT_EQ(fontsFor(signs, theme::specFor(signs, fixed)), 1U);
    EXPECT_EQ(fontsFor(signs, theme::specFor(signs, theDesigns)), 1U);
}

TEST(ThemeTest, LettersThatTheDesignsFontHasAreDrawnInIt) {
    const theme::FontSpec fixed{11.5, QFont::DemiBold, theme::FontDesign::monospaced};

    EXPECT_EQ(theme::specFor("Ctrl+Alt+Super+W", fixed).design, theme::FontDesign::monospaced);
    EXPECT_EQ(theme::specFor("", fixed).design, theme::FontDesign::monospaced);
}

TEST(ThemeTest, TheDesignStaysWhereNoFontHasTheLetters) {
    const theme::FontSpec fixed{11.5, QFont::DemiBold, theme::FontDesign::monospaced};
    const char32_t unassigned = 0xE0FFF;

    EXPECT_EQ(theme::specFor(QString::fromUcs4(&unassigned, 1), fixed).design,
              theme::FontDesign::monospaced);
}

TEST(ThemeTest, TheWholeApplicationIsLightTextOnDarkGround) {
    theme::apply();

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
