// Draws the icon in every size that a system wants it in.
//
// icon_set SVG FOLDER: for a Mac. The folder, whose name has to end in ".iconset", is then
// what the system's iconutil makes an icon of.
// icon_set SVG FOLDER NAME: for the icon theme of a Linux desktop, as NAME.png in a folder
// for each size.
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <iostream>
#include <vector>

namespace {

struct Picture {
    /// Below the set's folder.
    QString file;
    int pixels;
};

std::vector<Picture> setForMac() {
    std::vector<Picture> set;
    for (const int points : {16, 32, 128, 256, 512}) {
        set.push_back({QStringLiteral("icon_%1x%1.png").arg(points), points});
        set.push_back({QStringLiteral("icon_%1x%1@2x.png").arg(points), 2 * points});
    }
    return set;
}

std::vector<Picture> setForTheme(const QString& name) {
    std::vector<Picture> set;
    for (const int pixels : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        set.push_back({QStringLiteral("%1x%1/apps/%2.png").arg(pixels).arg(name), pixels});
    }
    return set;
}

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
    if (argc != 3 && argc != 4) {
        std::cerr << "usage: tavrel-icon SVG FOLDER [NAME]\n";
        return 2;
    }
    QSvgRenderer icon(QString::fromLocal8Bit(argv[1]));
    const QDir folder(QString::fromLocal8Bit(argv[2]));
    if (!icon.isValid() || !folder.mkpath(QStringLiteral("."))) {
        std::cerr << "tavrel-icon: no icon in " << argv[1] << ", or no folder " << argv[2] << '\n';
        return 1;
    }
    const auto set = argc == 3 ? setForMac() : setForTheme(QString::fromLocal8Bit(argv[3]));
    for (const Picture& picture : set) {
        const QString file = folder.filePath(picture.file);
        if (!QDir().mkpath(QFileInfo(file).path()) || !draw(icon, picture.pixels).save(file)) {
            std::cerr << "tavrel-icon: cannot write " << file.toStdString() << '\n';
            return 1;
        }
    }
    return 0;
}
