#include "tests/ui/WidgetTest.h"
#include "ui/controls/Label.h"
#include "ui/paint/DesignFont.h"
#include "ui/paint/Theme.h"

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

TEST(DesignFontTest, BreaksBetweenWordsAndAtLineFeeds) {
    const DesignFont font(small);
    EXPECT_EQ(font.lines("one\ntwo", 500, 3), QStringList({"one", "two"}));
    EXPECT_EQ(font.lines("one two", font.width("one t"), 3), QStringList({"one", "two"}));
    EXPECT_EQ(font.lines("one two", 500, 3), QStringList("one two"));
}

TEST(DesignFontTest, CutsWhatIsBeyondTheLastLine) {
    const DesignFont font(small);
    EXPECT_EQ(font.lines("one\ntwo\nthree", 500, 2), QStringList({"one", "two three"}));
    const QStringList cut = font.lines("one two three four", font.width("one two"), 2);
    ASSERT_EQ(cut.size(), 2);
    EXPECT_EQ(cut.first(), "one two");
    EXPECT_TRUE(cut.last().endsWith(u'…'));
    EXPECT_TRUE(font.lines("", 500, 2).isEmpty());
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

TEST(LabelTest, WantsTheRoomItsTextNeeds) {
    Label label(small, Qt::white, nullptr);
    label.setText("Ready");
    const DesignFont font(small);
    EXPECT_NEAR(label.sizeHint().width(), font.width("Ready"), 1);
    EXPECT_NEAR(label.sizeHint().height(), font.lineHeight(), 1);
    label.resize(label.sizeHint());
    EXPECT_EQ(label.visibleLines(), QStringList("Ready"));
}

TEST(LabelTest, TheLeadingPartIsPutBeforeTheText) {
    Label label(small, Qt::white, nullptr);
    label.setText("Ready");
    const QSize plain = label.sizeHint();
    QRectF place;
    label.setPrefix({7, 7}, 5, [&](QPainter&, const QRectF& given) { place = given; });
    EXPECT_EQ(label.sizeHint().width(), plain.width() + 12);
    label.resize(label.sizeHint());
    label.grab();
    EXPECT_EQ(place.left(), 0);
    EXPECT_EQ(place.size(), QSizeF(7, 7));
    EXPECT_NEAR(place.center().y(), label.height() / 2.0, 0.01);
}

TEST(LabelTest, NeedsAsManyLinesAsItMayHave) {
    Label label(small, Qt::white, nullptr);
    label.setMaximumLines(2);
    EXPECT_EQ(label.heightForWidth(100), label.lineHeight());
    label.setText("one\ntwo");
    EXPECT_NEAR(label.heightForWidth(100), 2 * label.lineHeight(), 1);
    label.setText("one\ntwo\nthree");
    EXPECT_NEAR(label.heightForWidth(100), 2 * label.lineHeight(), 1);
}

}  // namespace
}  // namespace tavrel
