#include "ui/paint/DesignStyle.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QMenuBar>

#include "tests/ui/WidgetTest.h"

namespace tavrel {
namespace {

/// The toolkit's plug-ins in this process; none where the system doesn't tell.
qsizetype pluginsLoaded() {
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QFile::ReadOnly) ? maps.readAll().count("/plugins/") : 0;
}

TEST(DesignStyleTest, AMenuBarLoadsNoPlugInForPictures) {
    QApplication::setStyle(new theme::DesignStyle);
    const qsizetype before = pluginsLoaded();

    QMenuBar menuBar;
    menuBar.addMenu(QStringLiteral("File"));
    menuBar.adjustSize();

    EXPECT_EQ(pluginsLoaded(), before);
}

TEST(DesignStyleTest, TheArrowToHiddenMenusIsDrawn) {
    const theme::DesignStyle style;

    const QIcon icon = style.standardIcon(QStyle::SP_ToolBarHorizontalExtensionButton);

    const QImage picture = icon.pixmap(16, 16).toImage();
    EXPECT_GT(picture.pixelColor(7, 8).alpha(), 100) << "the tip of the first of two";
    EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0);
}

TEST(DesignStyleTest, OtherIconsAreTheToolkits) {
    const theme::DesignStyle style;

    EXPECT_FALSE(style.standardIcon(QStyle::SP_MessageBoxWarning).isNull());
}

}  // namespace
}  // namespace tavrel
