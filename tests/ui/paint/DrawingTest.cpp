#include <QImage>
#include <QPainter>
#include <cmath>

#include "tests/ui/WidgetTest.h"
#include "ui/paint/Drawing.h"

namespace tavrel {
namespace {

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

}  // namespace
}  // namespace tavrel
