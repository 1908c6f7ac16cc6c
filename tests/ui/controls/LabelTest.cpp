#include "tests/ui/WidgetTest.h"
#include "ui/controls/Label.h"

namespace tavrel {
namespace {

class LabelTest : public WidgetTest {
protected:
    static constexpr theme::FontSpec font{11.5, QFont::Normal};

    Label label{font, Qt::white, nullptr};
};

TEST_F(LabelTest, WantsTheRoomThatItsTextNeeds) {
    label.setText("Ready");

    EXPECT_NEAR(label.sizeHint().width(), DesignFont(font).width("Ready"), 1);
    EXPECT_NEAR(label.sizeHint().height(), DesignFont(font).lineHeight(), 1);
    label.resize(label.sizeHint());
    EXPECT_EQ(label.visibleLines(), QStringList("Ready"));
}

TEST_F(LabelTest, ThePrefixIsDrawnBeforeTheTextInTheMiddleOfItsHeight) {
    label.setText("Ready");
    const int plainWidth = label.sizeHint().width();
    QRectF place;

    label.setPrefix({7, 7}, 5, [&](QPainter&, const QRectF& given) { place = given; });
    EXPECT_EQ(label.sizeHint().width(), plainWidth + 12);

    label.resize(label.sizeHint());
    label.grab();
    EXPECT_EQ(place.left(), 0);
    EXPECT_EQ(place.size(), QSizeF(7, 7));
    EXPECT_NEAR(place.center().y(), label.height() / 2.0, 0.01);
}

TEST_F(LabelTest, IsAsHighAsTheLinesItNeedsAndMayHave) {
    label.setMaximumLines(2);
    EXPECT_EQ(label.heightForWidth(100), label.lineHeight());

    for (const char* text : {"one\ntwo", "one\ntwo\nthree"}) {
        label.setText(text);
        EXPECT_NEAR(label.heightForWidth(100), 2 * label.lineHeight(), 1) << text;
    }
}

}  // namespace
}  // namespace tavrel
