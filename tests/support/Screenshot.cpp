#include "tests/support/Screenshot.h"

#include <QImage>
#include <QString>
#include <stdexcept>

#include "tests/support/XConnection.h"

namespace tavrel::support {

namespace {

QImage pictureOf(const XConnection& connection, xcb_window_t shown) {
    const XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(
        connection.get(), xcb_get_geometry(connection.get(), shown), nullptr));
    if (!geometry) {
        throw std::runtime_error("no such window to take a picture of");
    }
    const XcbReply<xcb_get_image_reply_t> image(
        xcb_get_image_reply(connection.get(),
                            xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, shown, 0, 0,
                                          geometry->width, geometry->height, ~0U),
                            nullptr));
    if (!image || image->depth != 24) {
        throw std::runtime_error("the X server gives no picture of the window");
    }
    // A copy: what xcb has received goes away with its reply.
    return QImage(xcb_get_image_data(image.get()), geometry->width, geometry->height,
                  QImage::Format_RGB32)
        .copy();
}

}  // namespace

QImage takeScreenshot(const std::string& displayName, xcb_window_t window) {
    return pictureOf(XConnection(displayName), window);
}

void saveScreenshot(const std::string& displayName, const std::filesystem::path& file,
                    xcb_window_t window) {
    const XConnection connection(displayName);
    const QImage picture = pictureOf(connection, window == XCB_NONE ? connection.root() : window);
    std::filesystem::create_directories(file.parent_path());
    if (!picture.save(QString::fromStdString(file.string()), "PNG")) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

}  // namespace tavrel::support
