// Draws an icon in every size that a Mac wants it in: icon_set SVG FOLDER. The folder, whose
// name has to end in ".iconset", is then what the system's iconutil makes an icon of.
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <iostream>

namespace {

/// A transparent picture of that many pixels each way, with the icon all over it.
QImage draw(QSvgRenderer& icon, int pixels) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    icon.render(&painter);
    return image;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: tavrel-icon SVG FOLDER\n";
        return 2;
    }
    QSvgRenderer icon(QString::fromLocal8Bit(argv[1]));
    const QDir folder(QString::fromLocal8Bit(argv[2]));
    if (!icon.isValid() || !folder.mkpath(QStringLiteral("."))) {
        std::cerr << "tavrel-icon: no icon in " << argv[1] << ", or no folder " << argv[2] << '\n';
        return 1;
    }
    for (const int points : {16, 32, 128, 256, 512}) {
        for (const int scale : {1, 2}) {
            const QString name = QStringLiteral("icon_%1x%1%2.png")
                                     .arg(points)
                                     .arg(scale == 1 ? QString() : QStringLiteral("@2x"));
            if (!draw(icon, points * scale).save(folder.filePath(name))) {
                std::cerr << "tavrel-icon: cannot write " << name.toStdString() << '\n';
                return 1;
            }
        }
    }
    return 0;
}
