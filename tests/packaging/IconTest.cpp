#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

extern char** environ;  // NOLINT(*-avoid-non-const-global-variables): the system's.

namespace tavrel {
namespace {

/// The exit code of the program, or -1. Not by QProcess, whose way of starting programs the
/// thread sanitizer cannot follow.
int run(const QString& picture, const QString& set) {
    QByteArray program(ICON_PROGRAM);
    QByteArray from = picture.toUtf8();
    QByteArray to = set.toUtf8();
    char* const arguments[] = {program.data(), from.data(), to.data(), nullptr};
    pid_t pid = -1;
    int status = -1;
    const bool hasRun =
        ::posix_spawn(&pid, program.data(), nullptr, nullptr, arguments, environ) == 0 &&
        ::waitpid(pid, &status, 0) == pid;
    return hasRun && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

const QString svg = QStringLiteral(PROJECT_FOLDER "/packaging/Tavrel.svg");

class IconTest : public testing::Test {
protected:
    QImage picture(const QString& name) const {
        return QImage(QDir(set).filePath(QStringLiteral("icon_%1.png").arg(name)));
    }

    QTemporaryDir folder;
    const QString set = folder.filePath(QStringLiteral("Tavrel.iconset"));
};

TEST_F(IconTest, isDrawnInAllTheSizesThatASetHas) {
    ASSERT_EQ(run(svg, set), 0);
    EXPECT_EQ(QDir(set).entryList(QDir::Files).size(), 10);
    for (const int points : {16, 32, 128, 256, 512}) {
        const QString name = QStringLiteral("%1x%1").arg(points);
        EXPECT_EQ(picture(name).size(), QSize(points, points));
        EXPECT_EQ(picture(name + QStringLiteral("@2x")).size(), QSize(2 * points, 2 * points));
    }
}

TEST_F(IconTest, isIndigoWithALitScreenAndLeavesTheCornersFree) {
    ASSERT_EQ(run(svg, set), 0);
    const QImage large = picture(QStringLiteral("512x512@2x"));
    EXPECT_EQ(qAlpha(large.pixel(20, 20)), 0);
    EXPECT_EQ(qAlpha(large.pixel(1003, 1003)), 0);
    const QColor ground = large.pixelColor(512, 860);
    EXPECT_EQ(ground.alpha(), 255);
    EXPECT_GT(ground.blue(), ground.red() + 50);
    EXPECT_GT(ground.blue(), ground.green() + 50);
    EXPECT_GT(large.pixelColor(240, 460).lightness(), 220) << "the lit screen";
    EXPECT_LT(large.pixelColor(760, 330).lightness(), 90) << "the screen at rest";
}

TEST_F(IconTest, isRecognisableAtItsSmallestToo) {
    ASSERT_EQ(run(svg, set), 0);
    const QImage small = picture(QStringLiteral("16x16"));
    EXPECT_GT(small.pixelColor(4, 8).lightness(), small.pixelColor(12, 5).lightness() + 60);
}

TEST_F(IconTest, whatIsNoPictureMakesNoIcon) {
    EXPECT_EQ(run(QStringLiteral(PROJECT_FOLDER "/CMakeLists.txt"), set), 1);
    EXPECT_FALSE(QDir(set).exists());
}

TEST_F(IconTest, aFolderThatCannotBeMadeIsAnError) {
    EXPECT_EQ(run(svg, svg + QStringLiteral("/below")), 1);
}

}  // namespace
}  // namespace tavrel
