#include <QImage>

#include "tests/ui/WidgetTest.h"
#include "ui/paint/DesignFont.h"

namespace tavrel {
namespace {

constexpr theme::FontSpec small{11.5, QFont::Normal};

TEST(DesignFontTest, HalfSizesAreExact) {
    const QString sample = "External monitor · removed from desktop when off";
    const double ten = DesignFont({10, QFont::Normal}).width(sample);

    for (const double size : {9.5, 11.5, 13.5, 14.0}) {
        EXPECT_NEAR(DesignFont({size, QFont::Normal}).width(sample), ten * size / 10, 1.0) << size;
    }
}

TEST(DesignFontTest, TrackingIsAddedAfterEachLetter) {
    const DesignFont plain({11, QFont::DemiBold});
    const DesignFont tracked({11, QFont::DemiBold, theme::FontDesign::standard, 1.5});

    EXPECT_NEAR(tracked.width("TAVREL"), plain.width("TAVREL") + 6 * 1.5, 0.5);
}

TEST(DesignFontTest, LinesBreakBetweenWordsAndAtLineFeeds) {
    const DesignFont font(small);

    EXPECT_EQ(font.lines("one\ntwo", 500, 3), QStringList({"one", "two"}));
    EXPECT_EQ(font.lines("one two", font.width("one t"), 3), QStringList({"one", "two"}));
    EXPECT_EQ(font.lines("one two", 500, 3), QStringList("one two"));
    EXPECT_TRUE(font.lines("", 500, 2).isEmpty());
}

TEST(DesignFontTest, TheLastLineTakesTheRestAndEndsWithAnEllipsisWhereItIsCut) {
    const DesignFont font(small);
    const QStringList cut = font.lines("one two three four", font.width("one two"), 2);

    EXPECT_EQ(font.lines("one\ntwo\nthree", 500, 2), QStringList({"one", "two three"}));
    ASSERT_EQ(cut.size(), 2);
    EXPECT_EQ(cut.first(), "one two");
    EXPECT_TRUE(cut.last().endsWith(u'…'));
}

TEST(DesignFontTest, HasEveryGlyphOfTheShortcutHint) {
    const DesignFont font({11.5, QFont::DemiBold, theme::FontDesign::monospaced});
    const auto drawn = [&](const QString& glyph) {
        QImage image(40, 40, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.setPen(Qt::white);
        font.draw(painter, {10, 25}, glyph);
        painter.end();
        return image;
    };
    // A glyph that no font has is drawn as the box that stands for any of them.
    const QImage missing = drawn(QString(QChar(0xE123)));

    for (const QChar glyph : QString("⌃⌥⌘W")) {
        EXPECT_NE(drawn(glyph), missing) << QString(glyph).toStdString();
        EXPECT_NE(drawn(glyph), drawn(" ")) << QString(glyph).toStdString();
    }
}

}  // namespace
}  // namespace tavrel
