#include <QImage>
#include <QPainter>
#include <array>
#include <cmath>
#include <set>

#include "tests/ui/WidgetTest.h"
#include "ui/paint/Backdrop.h"

namespace tavrel {
namespace {

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

}  // namespace
}  // namespace tavrel
