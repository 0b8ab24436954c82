#include "desktop/session/DesktopFileSystem.h"

#include "platform/PlatformError.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

namespace zivra::desktop {

namespace {

using namespace std::chrono_literals;

class DesktopFileSystemTest : public testing::Test {
protected:
    DesktopFileSystemTest()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.filePath("data")));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder.path()));
    }

    QUrl makeFile(const QString &name, const QByteArray &content)
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return QUrl::fromLocalFile(file.fileName());
    }

    static QByteArray content(const QUrl &url)
    {
        QFile file(url.toLocalFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }

    // In the home folder's file system, as trash works by file system.
    QTemporaryDir m_folder{QDir::homePath() + "/.zivra-test-XXXXXX"};
    DesktopFileSystem m_files;
};

TEST_F(DesktopFileSystemTest, findsTheMoviesFolder)
{
    EXPECT_EQ(m_files.moviesDirectory().toLocalFile(), QDir::homePath() + "/Videos");
    makeFile("user-dirs.dirs", "XDG_VIDEOS_DIR=\"$HOME/Vidéos\"\n");
    EXPECT_EQ(m_files.moviesDirectory().toLocalFile(), QDir::homePath() + "/Vidéos");
}

TEST_F(DesktopFileSystemTest, renamesWithoutOverwriting)
{
    const auto from = makeFile("Take.mp4", "new");
    const auto taken = makeFile("Taken.mp4", "old");
    EXPECT_THROW(m_files.moveItem(from, taken), PlatformError);
    EXPECT_EQ(content(taken), "old");
    const auto free = QUrl::fromLocalFile(m_folder.filePath("Free.mp4"));
    m_files.moveItem(from, free);
    EXPECT_EQ(content(free), "new");
}

TEST_F(DesktopFileSystemTest, trashesWhereItCanBeRestored)
{
    const auto trashed = [&](const QString &name) {
        return content(QUrl::fromLocalFile(m_folder.filePath("data/Trash/" + name)));
    };
    for (const auto *text : {"first", "second"}) {
        const auto file = makeFile("Täke 100%.mp4", text);
        m_files.trashItem(file);
        EXPECT_THROW(m_files.trashItem(file), PlatformError);
    }
    EXPECT_EQ(trashed("files/Täke 100%.mp4"), "first");
    EXPECT_EQ(trashed("files/Täke 100% 2.mp4"), "second");
    const auto info = trashed("info/Täke 100% 2.mp4.trashinfo");
    const auto line =
        "[Trash Info]\nPath=" + QFile::encodeName(m_folder.path()) + "/T%C3%A4ke%20100%25.mp4\n";
    EXPECT_TRUE(info.startsWith(line + "DeletionDate=20")) << info.constData();
}

TEST_F(DesktopFileSystemTest, trashesOnTheFileSystemOfTheFile)
{
    const QTemporaryDir other("/dev/shm/zivra-test-XXXXXX");
    if (!other.isValid()) {
        GTEST_SKIP() << "needs a second file system";
    }
    const auto name = QFileInfo(other.path()).fileName();
    m_files.trashItem(QUrl::fromLocalFile(other.path()));
    const QDir trash("/dev/shm/.Trash-" + QString::number(::getuid()));
    const auto info = QUrl::fromLocalFile(trash.filePath("info/" + name + ".trashinfo"));
    EXPECT_TRUE(content(info).contains("\nPath=" + name.toUtf8() + "\n")) << content(info).constData();
    EXPECT_TRUE(QFile::remove(info.toLocalFile()));
    EXPECT_TRUE(QDir().rmdir(trash.filePath("files/" + name)));
}

TEST_F(DesktopFileSystemTest, replacesKeepingTheCreationDate)
{
    const auto item = makeFile("Take.mp4", "old");
    QFile::setPermissions(item.toLocalFile(), QFile::ReadOwner | QFile::WriteOwner);
    const auto created = m_files.dates(item).created;
    ASSERT_TRUE(created.isValid());
    for (const auto *text : {"first", "second"}) {
        std::this_thread::sleep_for(20ms);
        const auto newItem = makeFile(".trimmed.mp4", text);
        m_files.replaceItem(item, newItem);
        EXPECT_EQ(content(item), text);
        EXPECT_EQ(content(newItem), "(none)");
        EXPECT_EQ(m_files.dates(item).created, created);
        EXPECT_GT(m_files.dates(item).modified, created);
        EXPECT_FALSE(QFile::permissions(item.toLocalFile()) & QFile::ReadOther);
    }
}

TEST_F(DesktopFileSystemTest, leavesBothWhenReplacingFails)
{
    const auto newItem = makeFile(".trimmed.mp4", "new");
    const auto before = m_files.dates(newItem).created;
    EXPECT_THROW(m_files.replaceItem(QUrl::fromLocalFile(m_folder.path()), newItem), PlatformError);
    EXPECT_EQ(content(newItem), "new");
    EXPECT_EQ(m_files.dates(newItem).created, before);
}

} // namespace

} // namespace zivra::desktop
