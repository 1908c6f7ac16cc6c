#include "tests/ui/WidgetTest.h"
#include "ui/controls/Spinner.h"

namespace tavrel {
namespace {

class SpinnerTest : public WidgetTest {
protected:
    SpinnerTest() {
        window.setPalette(QPalette(Qt::black));
        window.resize(16, 16);
    }

    QWidget window;
    Spinner& spinner = *new Spinner(&window);
};

TEST_F(SpinnerTest, TurnsOnlyWhileItIsVisible) {
    EXPECT_FALSE(spinner.isSpinning());

    showActive(window);
    const QImage first = spinner.grab().toImage();
    EXPECT_TRUE(spinner.isSpinning());
    EXPECT_TRUE(runUntil([&] { return spinner.grab().toImage() != first; }));

    spinner.hide();
    EXPECT_FALSE(spinner.isSpinning());

    window.hide();
    spinner.show();
    EXPECT_FALSE(spinner.isSpinning());
}

TEST_F(SpinnerTest, ItsBarsBrightenClockwiseFromTheTop) {
    const QImage image = window.grab().toImage();

    int last = -1;
    for (const QPoint& bar : {QPoint(8, 3), QPoint(12, 8), QPoint(8, 12), QPoint(3, 8)}) {
        const int brightness = qGray(image.pixel(bar));
        EXPECT_GT(brightness, last);
        last = brightness;
    }
}

}  // namespace
}  // namespace tavrel
