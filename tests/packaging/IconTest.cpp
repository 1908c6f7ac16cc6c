// The program that draws the icon in every size, run on the icon itself.
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <set>

extern char** environ;  // NOLINT(*-avoid-non-const-global-variables): the system's.

namespace tavrel {
namespace {

class IconTest : public testing::Test {
protected:
    /// The program's exit code, or -1. Not by QProcess, whose way of starting programs the
    /// thread sanitizer cannot follow.
    static int draw(const QString& picture, const QString& folder, const QString& name = {}) {
        QByteArray program(ICON_PROGRAM);
        QByteArray from = picture.toUtf8();
        QByteArray to = folder.toUtf8();
        QByteArray as = name.toUtf8();
        char* const arguments[] = {program.data(), from.data(), to.data(),
                                   name.isEmpty() ? nullptr : as.data(), nullptr};
        pid_t pid = -1;
        int status = -1;
        const bool hasRun =
            ::posix_spawn(&pid, program.data(), nullptr, nullptr, arguments, environ) == 0 &&
            ::waitpid(pid, &status, 0) == pid;
        return hasRun && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    QImage drawn(const QString& name) const {
        return QImage(set.filePath(QStringLiteral("icon_%1.png").arg(name)));
    }

    const QString icon = QStringLiteral(PROJECT_FOLDER "/packaging/Tavrel.svg");
    const QTemporaryDir folder;
    const QDir set = folder.filePath(QStringLiteral("Tavrel.iconset"));
};

TEST_F(IconTest, IsDrawnInAllTheSizesThatASetHas) {
    ASSERT_EQ(draw(icon, set.path()), 0);

    EXPECT_EQ(set.entryList(QDir::Files).size(), 10);
    for (const int points : {16, 32, 128, 256, 512}) {
        const QString name = QStringLiteral("%1x%1").arg(points);
        EXPECT_EQ(drawn(name).size(), QSize(points, points));
        EXPECT_EQ(drawn(name + QStringLiteral("@2x")).size(), QSize(2 * points, 2 * points));
    }
}

TEST_F(IconTest, IsDrawnInAllTheSizesThatAnIconThemeHas) {
    ASSERT_EQ(draw(icon, folder.path(), QStringLiteral("some.Name")), 0);

    const std::set<int> sizes{16, 22, 24, 32, 48, 64, 128, 256, 512};
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(),
              static_cast<int>(sizes.size()));
    for (const int size : sizes) {
        const QString file = QStringLiteral("%1x%1/apps/some.Name.png").arg(size);
        EXPECT_EQ(QImage(folder.filePath(file)).size(), QSize(size, size)) << size;
    }
}

TEST_F(IconTest, IsIndigoWithALitScreenAndLeavesTheCornersFree) {
    ASSERT_EQ(draw(icon, set.path()), 0);

    const QImage large = drawn(QStringLiteral("512x512@2x"));
    const QColor ground = large.pixelColor(512, 860);
    EXPECT_EQ(qAlpha(large.pixel(20, 20)), 0);
    EXPECT_EQ(qAlpha(large.pixel(1003, 1003)), 0);
    EXPECT_EQ(ground.alpha(), 255);
    EXPECT_GT(ground.blue(), ground.red() + 50);
    EXPECT_GT(ground.blue(), ground.green() + 50);
    EXPECT_GT(large.pixelColor(240, 460).lightness(), 220) << "the lit screen";
    EXPECT_LT(large.pixelColor(760, 330).lightness(), 90) << "the screen that is off";
}

TEST_F(IconTest, CanBeRecognisedAtItsSmallest) {
    ASSERT_EQ(draw(icon, set.path()), 0);

    const QImage small = drawn(QStringLiteral("16x16"));
    EXPECT_GT(small.pixelColor(4, 8).lightness(), small.pixelColor(12, 5).lightness() + 60);
}

TEST_F(IconTest, IsNotMadeOfAFileThatIsNoPicture) {
    EXPECT_EQ(draw(QStringLiteral(PROJECT_FOLDER "/CMakeLists.txt"), set.path()), 1);
    EXPECT_FALSE(set.exists());
}

TEST_F(IconTest, IsNotMadeInAFolderThatCannotBe) {
    EXPECT_EQ(draw(icon, icon + QStringLiteral("/below")), 1);
}

}  // namespace
}  // namespace tavrel
