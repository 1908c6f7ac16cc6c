#include <QImage>
#include <QPainter>
#include <array>
#include <cmath>
#include <ostream>
#include <set>
#include <vector>

#include "tests/ui/WidgetTest.h"
#include "ui/paint/Backdrop.h"
#include "ui/paint/Drawing.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

QImage canvas(int side = 40) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

TEST(ContinuousCornersTest, MeetAnArcAtTheCornersMiddle) {
    const QPainterPath path = continuousRoundedRect({0, 0, 464, 78}, 14);
    const double middle = 14 * (1 - std::sqrt(0.5));

    EXPECT_TRUE(path.contains(QPointF(middle + 0.05, middle + 0.05)));
    EXPECT_FALSE(path.contains(QPointF(middle - 0.05, middle - 0.05)));
    EXPECT_EQ(path.boundingRect(), QRectF(0, 0, 464, 78));
}

TEST(ContinuousCornersTest, LeaveTheSideEarlierThanAnArc) {
    const QPainterPath path = continuousRoundedRect({0, 0, 464, 78}, 14);

    // An arc of 14 would have just begun here, and look as if it were still on the side.
    EXPECT_FALSE(path.contains(QPointF(0.02, 14.5)));
    EXPECT_TRUE(path.contains(QPointF(0.02, 21.5)));
}

TEST(ContinuousCornersTest, AreAllAlike) {
    const QPainterPath path = continuousRoundedRect({0, 0, 100, 60}, 12);

    for (double x = 0.25; x < 20; x += 0.5) {
        for (double y = 0.25; y < 20; y += 0.5) {
            const bool inside = path.contains(QPointF(x, y));
            EXPECT_EQ(path.contains(QPointF(100 - x, y)), inside);
            EXPECT_EQ(path.contains(QPointF(x, 60 - y)), inside);
            EXPECT_EQ(path.contains(QPointF(100 - x, 60 - y)), inside);
        }
    }
}

TEST(ContinuousCornersTest, MakeACircleOfASquareTooSmallForTheRadius) {
    const QPainterPath path = continuousRoundedRect({0, 0, 20, 20}, 50);
    const QPointF diagonal(std::sqrt(0.5), std::sqrt(0.5));

    EXPECT_TRUE(path.contains(QPointF(10, 10) + 9.9 * diagonal));
    EXPECT_FALSE(path.contains(QPointF(10, 10) + 10.1 * diagonal));
}

TEST(ContinuousCornersTest, OfRadiusZeroLeaveTheRectangle) {
    EXPECT_EQ(continuousRoundedRect({0, 0, 20, 20}, 0).boundingRect(), QRectF(0, 0, 20, 20));
}

TEST(GlowTest, IsADiscBlurredByAGaussian) {
    const double radius = 150;
    const double sigma = 65;
    const Glow glow(radius, sigma);

    EXPECT_NEAR(glow.strengthAt(0), 1 - std::exp(-radius * radius / (2 * sigma * sigma)), 1e-4);
    // Elsewhere compared with a plain sum over a fine grid.
    for (const float distance : {60.0F, 150.0F, 200.0F, 300.0F}) {
        double sum = 0;
        constexpr double step = 2;
        for (double x = -radius + step / 2; x < radius; x += step) {
            for (double y = -radius + step / 2; y < radius; y += step) {
                if (x * x + y * y < radius * radius) {
                    const double square = (x - distance) * (x - distance) + y * y;
                    sum += std::exp(-square / (2 * sigma * sigma));
                }
            }
        }
        sum *= step * step / (2 * std::acos(-1.0) * sigma * sigma);
        EXPECT_NEAR(glow.strengthAt(distance), sum, 2e-3) << distance;
    }
}

TEST(GlowTest, FallsSteadilyToNothing) {
    const Glow glow(150, 65);

    for (float distance = 0; distance < 600; distance += 0.25F) {
        EXPECT_GE(glow.strengthAt(distance), glow.strengthAt(distance + 0.25F)) << distance;
    }
    EXPECT_EQ(glow.strengthAt(600), 0);
}

/// A colour's red, green and blue, each from 0 to 255.
using Rgb = std::array<double, 3>;

/// The mean of a part of a picture, in which dithering makes no difference.
Rgb meanIn(const QImage& image, const QRect& part) {
    Rgb sum{};
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            sum[0] += qRed(pixel);
            sum[1] += qGreen(pixel);
            sum[2] += qBlue(pixel);
        }
    }
    for (double& each : sum) {
        each /= part.width() * part.height();
    }
    return sum;
}

/// What the design has at `place` in a window of 520 by 486.
Rgb designedBackdropAt(const QPointF& place) {
    constexpr Rgb topLeading{0.045, 0.06, 0.1};
    constexpr Rgb bottomTrailing{0.085, 0.095, 0.15};
    constexpr Rgb indigo{94 / 255.0, 92 / 255.0, 230 / 255.0};
    static const Glow blurredCircle(150, 65);
    const double along = (place.x() * 520 + place.y() * 486) / (520.0 * 520 + 486.0 * 486);
    const double glow = 0.18 * static_cast<double>(blurredCircle.strengthAt(static_cast<float>(
                                   std::hypot(place.x() - (260 + 190), place.y() - (243 - 180)))));
    Rgb result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        const double ground = topLeading[i] + (bottomTrailing[i] - topLeading[i]) * along;
        result[i] = 255 * (ground + (indigo[i] - ground) * glow);
    }
    return result;
}

TEST(BackdropTest, IsAGradientFromCornerToCornerUnderABlurredCircle) {
    const QImage image = Backdrop().image({520, 486}, 1, {0, 0, 520, 486});

    for (const QPoint& place :
         {QPoint(8, 8), QPoint(450, 63), QPoint(300, 63), QPoint(450, 230), QPoint(260, 243),
          QPoint(510, 8), QPoint(8, 477), QPoint(511, 477)}) {
        const Rgb actual = meanIn(image, {place - QPoint(7, 7), QSize(15, 15)});
        const Rgb designed = designedBackdropAt(place + QPointF(0.5, 0.5));
        for (std::size_t i = 0; i < actual.size(); ++i) {
            EXPECT_NEAR(actual[i], designed[i], 0.25)
                << place.x() << ',' << place.y() << " channel " << i;
        }
    }
}

TEST(BackdropTest, HasTheResolutionOfTheDevice) {
    const Backdrop backdrop;
    const QPoint middle(260, 243);

    const QImage coarse = backdrop.image({520, 486}, 1, {middle, QSize(1, 1)});
    const QImage fine = backdrop.image({520, 486}, 2, {2 * middle, QSize(1, 1)});

    EXPECT_EQ(fine.devicePixelRatio(), 2);
    EXPECT_TRUE(isNear(fine.pixelColor(0, 0), coarse.pixelColor(0, 0), 1));
}

TEST(BackdropTest, APartIsWhatTheWholeShowsThere) {
    const Backdrop backdrop;
    const QRect part(413, 20, 90, 41);

    const QImage whole = backdrop.image({520, 486}, 1, {0, 0, 520, 486});

    EXPECT_EQ(backdrop.image({520, 486}, 1, part), whole.copy(part));
}

TEST(BackdropTest, PaintsWhatIsExposedToThePixel) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        const QSize pixels = QSize(52, 48) * ratio;
        QImage picture(pixels, QImage::Format_RGB32);
        picture.setDevicePixelRatio(ratio);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        Backdrop backdrop;

        backdrop.paint(painter, {52, 48}, {10, 12, 20, 8});
        painter.end();

        const QImage whole = backdrop.image({52, 48}, ratio, QRect(QPoint(), pixels));
        const QRect exposed(QPoint(10, 12) * ratio, QSize(20, 8) * ratio);
        EXPECT_EQ(picture.copy(exposed), whole.copy(exposed)) << ratio;
        EXPECT_EQ(picture.pixel(exposed.topLeft() - QPoint(1, 1)), 0xFFFFFFFFU) << ratio;
        EXPECT_EQ(picture.pixel(exposed.bottomRight() + QPoint(1, 1)), 0xFFFFFFFFU) << ratio;
    }
}

TEST(BackdropTest, PaintsWhatIsReadyAsIfItWereComputed) {
    const QSize size(52, 48);
    for (const double ratio : {1.0, 1.5, 2.0}) {
        // Ready for this device, for another, and for another window with as many pixels.
        for (Backdrop backdrop :
             {Backdrop(size, ratio), Backdrop(size, 3), Backdrop(size * ratio, 1)}) {
            for (int i = 0; i < 2; ++i) {
                QImage picture(size * ratio, QImage::Format_RGB32);
                picture.setDevicePixelRatio(ratio);
                picture.fill(Qt::white);
                QPainter painter(&picture);

                backdrop.paint(painter, size, {{0, 0}, size});
                painter.end();

                EXPECT_EQ(picture, Backdrop().image(size, ratio, QRect(QPoint(), picture.size())))
                    << ratio << ' ' << i;
            }
        }
    }
}

TEST(BackdropTest, OfWhatIsReadyForTheWholeAPartIsComputed) {
    const QSize size(52, 48);
    Backdrop backdrop(size, 1);
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);

    backdrop.paint(painter, size, {10, 12, 20, 8});
    painter.end();

    const QRect exposed(10, 12, 20, 8);
    EXPECT_EQ(picture.copy(exposed), Backdrop().image(size, 1, exposed));
    EXPECT_EQ(picture.pixel(9, 11), 0xFFFFFFFFU);
}

TEST(BackdropTest, ShowsNoBands) {
    const Backdrop backdrop;
    const QImage image = backdrop.image({520, 486}, 1, {0, 0, 520, 486});

    // Undithered, such a long stretch of the faint gradient would be one single colour. The
    // noise is no more than one step of a channel.
    std::set<QRgb> colors;
    for (int x = 100; x < 130; ++x) {
        colors.insert(image.pixel(x, 400));
        EXPECT_TRUE(isNear(image.pixel(x, 400), image.pixel(100, 400), 2));
    }
    EXPECT_GT(colors.size(), 2U);
}

TEST(LayerTest, PartsThatOverlapDoNotShowThroughEachOther) {
    QImage image = canvas();
    QPainter painter(&image);

    paintLayer(painter, {5, 5, 30, 30}, 0.5, [](QPainter& layer) {
        layer.fillRect(QRectF(5, 5, 20, 20), Qt::white);
        layer.fillRect(QRectF(15, 15, 20, 20), Qt::white);
    });
    painter.end();

    EXPECT_EQ(image.pixelColor(8, 8).alpha(), image.pixelColor(20, 20).alpha());
    EXPECT_NEAR(image.pixelColor(20, 20).alphaF(), 0.5, 0.01);
    EXPECT_EQ(image.pixelColor(2, 2).alpha(), 0);
}

TEST(LayerTest, HasTheResolutionOfTheDeviceUnderAnyScale) {
    QImage image = canvas(80);
    image.setDevicePixelRatio(2);
    QPainter painter(&image);

    paintLayer(painter, {5, 5, 30, 30}, 1,
               [](QPainter& layer) { layer.fillRect(QRectF(10.5, 10.5, 5, 5), Qt::white); });
    painter.end();

    EXPECT_EQ(image.pixelColor(21, 21).alpha(), 255);
    EXPECT_EQ(image.pixelColor(20, 20).alpha(), 0);
    EXPECT_EQ(image.pixelColor(30, 30).alpha(), 255);
    EXPECT_EQ(image.pixelColor(31, 31).alpha(), 0);
}

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
