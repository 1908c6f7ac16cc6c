#include "tests/ui/WidgetTest.h"
#include "ui/controls/Spinner.h"

namespace tavrel {
namespace {

TEST(SpinnerTest, TurnsWhileItIsShownAndRestsWhenHidden) {
    QWidget window;
    window.resize(60, 60);
    Spinner spinner(&window);
    spinner.move(20, 20);
    EXPECT_FALSE(spinner.isSpinning());
    showActive(window);
    EXPECT_TRUE(spinner.isSpinning());
    const QImage first = spinner.grab().toImage();
    EXPECT_TRUE(waitFor([&] { return spinner.grab().toImage() != first; }));
    spinner.hide();
    EXPECT_FALSE(spinner.isSpinning());
    window.hide();
    spinner.show();
    EXPECT_FALSE(spinner.isSpinning());
}

TEST(SpinnerTest, ItsBarsFadeFromStrongToFaint) {
    QWidget window;
    window.setPalette(QPalette(Qt::black));
    window.resize(16, 16);
    Spinner spinner(&window);
    spinner.move(0, 0);
    const QImage image = window.grab().toImage();
    // Clockwise from the top, where the next step will be: faint first.
    const std::array<QPoint, 4> bars{QPoint(8, 3), QPoint(12, 8), QPoint(8, 12), QPoint(3, 8)};
    int last = -1;
    for (const QPoint& bar : bars) {
        const int brightness = qGray(image.pixel(bar));
        EXPECT_GT(brightness, last);
        last = brightness;
    }
}

}  // namespace
}  // namespace tavrel
