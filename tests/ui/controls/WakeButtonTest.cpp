#include <QImage>

#include "tests/ui/WidgetTest.h"
#include "ui/controls/WakeButton.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

class WakeButtonHintTest : public WidgetTest {
protected:
    void open(const QString& hint) {
        window.setPalette(theme::darkPalette());
        window.resize(464, 50);
        delete button;
        button = new WakeButton("Wake both displays", hint, &window);
        button->setFace({{4, 4}, QSize{456, WakeButton::faceHeight}});
        button->setGeometry(window.rect());
        button->show();
        showActive(window);
    }

    /// The columns of the button's right half, from the left, in which something is drawn, as
    /// runs of neighbours.
    std::vector<std::pair<int, int>> strokes() {
        const QImage image = window.grab().toImage();
        std::vector<std::pair<int, int>> runs;
        for (int x = 232; x < 452; ++x) {
            bool isDrawn = false;
            for (int y = 10; y < 40; ++y) {
                isDrawn = isDrawn || qGray(image.pixel(x, y)) > qGray(image.pixel(232, y)) + 12;
            }
            if (isDrawn && !runs.empty() && runs.back().second == x - 1) {
                runs.back().second = x;
            } else if (isDrawn) {
                runs.emplace_back(x, x);
            }
        }
        return runs;
    }

    QWidget window;
    WakeButton* button = nullptr;
};

TEST_F(WakeButtonHintTest, TheSignsOfAMacsKeysStandApart) {
    open(QStringLiteral("⌃⌥⌘W"));

    const auto signs = strokes();

    EXPECT_EQ(signs.size(), 4U) << "each by itself";
    for (std::size_t i = 1; i < signs.size(); ++i) {
        EXPECT_GE(signs[i].first - signs[i - 1].second, 3) << i;
    }
}

TEST_F(WakeButtonHintTest, ItEndsAtTheRightPaddingHoweverItIsSpaced) {
    for (const char* hint : {"⌃⌥⌘W", "Ctrl+Alt+Super+W"}) {
        open(QString::fromUtf8(hint));

        // The face ends at 460, less 15 of padding; a letter has some room around it.
        ASSERT_FALSE(strokes().empty());
        EXPECT_NEAR(strokes().back().second + 1, 445, 2) << hint;
    }
}

TEST_F(WakeButtonHintTest, AnotherHintIsSpacedAndPlacedAsIfItHadBeenTheFirst) {
    const QString signs = QStringLiteral("⌃⌥⌘W");
    const QString letters = QStringLiteral("Ctrl+Alt+Super+W");
    for (const auto& [before, after] : {std::pair(signs, letters), std::pair(letters, signs)}) {
        open(after);
        const auto expected = strokes();
        open(before);
        ASSERT_NE(strokes(), expected);

        button->setShortcutHint(after);

        EXPECT_EQ(strokes(), expected) << after.toStdString();
    }
}

}  // namespace
}  // namespace tavrel
