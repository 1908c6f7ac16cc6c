#include <QImage>
#include <QPainter>
#include <algorithm>
#include <ostream>
#include <vector>

#include "tests/ui/WidgetTest.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

const char* nameOf(Icon icon) {
    switch (icon) {
        case Icon::arrowClockwise:
            return "arrowClockwise";
        case Icon::display:
            return "display";
        case Icon::displayWithWarning:
            return "displayWithWarning";
        case Icon::laptopComputer:
            return "laptopComputer";
        case Icon::lockFill:
            return "lockFill";
        case Icon::sunMaxFill:
            return "sunMaxFill";
    }
    return "";
}

class IconsTest : public testing::TestWithParam<Icon> {
protected:
    static QImage drawn(const QColor& color) {
        QImage image = canvas(80);
        QPainter painter(&image);
        paintIcon(painter, GetParam(), {8, 8, 64, 64}, color);
        painter.end();
        return image;
    }
};

TEST_P(IconsTest, IsDrawnWithinItsPlaceInItsColour) {
    const QColor color(200, 40, 90);
    const QImage image = drawn(color);

    int solid = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            EXPECT_TRUE(pixel.alpha() == 0 || QRect(8, 8, 64, 64).contains(x, y));
            if (pixel.alpha() == 255) {
                ++solid;
                EXPECT_TRUE(isNear(pixel, color, 1));
            }
        }
    }
    EXPECT_GT(solid, 100);
}

TEST_P(IconsTest, InATranslucentColourIsNowhereStrongerThanThat) {
    const QImage image = drawn(theme::white(0.55));

    int strongest = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            strongest = std::max(strongest, image.pixelColor(x, y).alpha());
        }
    }
    EXPECT_NEAR(strongest, 255 * 0.55, 2);
}

/// Places on a square of 24 by 24 that tell an icon from the others.
struct Shape {
    Icon icon;
    std::vector<QPointF> drawn;
    std::vector<QPointF> empty;
};

void PrintTo(const Shape& shape, std::ostream* out) {
    *out << nameOf(shape.icon);
}

class IconShapeTest : public testing::TestWithParam<Shape> {};

TEST_P(IconShapeTest, IsWhatItsNameSays) {
    constexpr int scale = 4;
    QImage image = canvas(24 * scale);
    QPainter painter(&image);
    paintIcon(painter, GetParam().icon, image.rect(), Qt::white);
    painter.end();
    const auto alphaAt = [&](const QPointF& place) {
        return image.pixelColor((place * scale).toPoint()).alpha();
    };

    for (const QPointF& place : GetParam().drawn) {
        EXPECT_GT(alphaAt(place), 200) << place.x() << ' ' << place.y();
    }
    for (const QPointF& place : GetParam().empty) {
        EXPECT_EQ(alphaAt(place), 0) << place.x() << ' ' << place.y();
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, IconShapeTest,
    testing::Values(
        // A ring that is open at the upper right, where its head is.
        Shape{Icon::arrowClockwise,
              {{5, 12}, {12, 19}, {12, 5}, {19.2, 5}, {16, 8.9}},
              {{12, 12}, {19, 10.5}, {2, 2}}},
        // A wide screen, and in the middle below it a foot.
        Shape{Icon::display,
              {{2.5, 10}, {21.5, 10}, {12, 4.4}, {12, 16.7}, {12, 18}, {8.5, 19.9}, {15.5, 19.9}},
              {{12, 10}, {4, 19.9}, {20, 19.9}, {7, 18.3}}},
        // The same without its lower right corner: there is a triangle with a mark in it.
        Shape{
            Icon::displayWithWarning,
            {{2.4, 9}, {21.8, 9}, {12, 3.3}, {17.7, 12.5}, {17.7, 20.6}, {17.7, 16.3}, {10, 19.6}},
            {{12, 9}, {21.8, 16}, {17.7, 18.1}, {16.2, 18}}},
        // A screen, and below it a base that is wider.
        Shape{Icon::laptopComputer,
              {{4.4, 10}, {19.6, 10}, {12, 5.2}, {2.5, 18.3}, {12, 18.3}, {21.5, 18.3}},
              {{12, 10}, {2.5, 10}, {21.5, 10}, {12, 20.5}}},
        // A full body under an open bow.
        Shape{Icon::lockFill,
              {{12, 15}, {7, 13}, {17, 19}, {12, 4.7}, {8.5, 9}, {15.5, 9}},
              {{12, 8.5}, {4, 15}, {20, 15}, {5, 8}}},
        // A full disc, and around it eight rays.
        Shape{Icon::sunMaxFill,
              {{12, 12},
               {9, 12},
               {12, 3.4},
               {12, 20.6},
               {3.4, 12},
               {20.6, 12},
               {6, 6},
               {18, 18},
               {6, 18},
               {18, 6}},
              {{12, 5.9}, {8.3, 3.4}, {3, 3}}}));

INSTANTIATE_TEST_SUITE_P(All, IconsTest,
                         testing::Values(Icon::arrowClockwise, Icon::display,
                                         Icon::displayWithWarning, Icon::laptopComputer,
                                         Icon::lockFill, Icon::sunMaxFill),
                         [](const auto& test) { return nameOf(test.param); });

}  // namespace
}  // namespace tavrel
