#include "library/Library.h"

#include "capture/ZivraError.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeFileSystem.h"
#include "support/fakes/FakeMovieServices.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

QDateTime day(int number)
{
    return {QDate(2026, 3, number), QTime(12, 0), Qt::UTC};
}

struct LibraryTest : testing::Test {
    QUrl addRecording(const QString &name, const QDateTime &created = {})
    {
        files.datesByName[name] = {created, created};
        return files.addFile("Zivra/" + name, "movie");
    }
    QStringList titles(const Library &library)
    {
        QStringList all;
        for (const Library::Recording &recording : library.recordings()) {
            all << recording.title();
        }
        return all;
    }

    FakeFileSystem files;
    FakeMovieServices movies;
};

} // namespace

TEST_F(LibraryTest, MakesItsFolderAndNamesFilesInIt)
{
    const Library library(files, movies);
    EXPECT_TRUE(QFileInfo(library.folder().toLocalFile()).isDir());
    EXPECT_TRUE(library.recordings().empty());
    const QUrl url = library.newRecordingURL("mov");
    EXPECT_TRUE(QRegularExpression("^Zivra \\d{4}-\\d\\d-\\d\\d at \\d\\d\\.\\d\\d\\.\\d\\d\\.mov$")
                    .match(url.fileName())
                    .hasMatch());
    files.addFile("Zivra/" + url.fileName());
    Library reread(files, movies);
    ASSERT_EQ(reread.recordings().size(), 1U);
    EXPECT_EQ(reread.recordings().front().url, url) << "one file has one URL";
}

TEST_F(LibraryTest, ListsVisibleMoviesNewestFirst)
{
    addRecording("old.mp4", day(1));
    addRecording("UPPER.MOV", day(3));
    addRecording("unknown.mp4");
    addRecording("what % is #1?.mov", day(2));
    for (const char *other :
         {".hidden.mp4", ".merge-1.mp4", "notes.txt", "clip.m4v", "mp4", "folder.mp4/x.txt"}) {
        files.addFile(QString("Zivra/") + other);
    }
    Library library(files, movies);
    EXPECT_EQ(titles(library), QStringList({"UPPER", "what % is #1?", "old", "unknown"}));
    EXPECT_EQ(library.recordings().back().modified, Library::distantPast());
    EXPECT_LT(Library::distantPast(), day(1));
    EXPECT_TRUE(QFile::exists(library.recordings().at(1).url.toLocalFile()));

    QDir(library.folder().toLocalFile()).removeRecursively();
    int changes = 0;
    QObject::connect(&library, &Library::recordingsChanged, [&] { ++changes; });
    library.refresh();
    EXPECT_TRUE(library.recordings().empty());
    EXPECT_EQ(changes, 1);
}

TEST_F(LibraryTest, KeepsTheListingsOrderOfEqualDates)
{
    for (int number = 0; number < 20; ++number) {
        addRecording(QString("%1.mp4").arg(number), day(1));
    }
    const Library library(files, movies);
    QStringList listed = QDir(library.folder().toLocalFile()).entryList(QDir::Files, QDir::Unsorted);
    EXPECT_EQ(titles(library), listed.replaceInStrings(".mp4", QString()));
}

TEST_F(LibraryTest, RenamesToASanitisedTitle)
{
    const std::vector<std::pair<QString, QString>> table{{"a/b: c", "a-b- c.mov"},
                                                         {"\n  spaced \t", "spaced.mov"},
                                                         {"clip.mp4", "clip.mp4.mov"},
                                                         {"50% #1", "50% #1.mov"}};
    for (const auto &[title, name] : table) {
        const QUrl url = addRecording("before.mov");
        Library library(files, movies);
        const auto renamed = library.rename(url, title);
        ASSERT_TRUE(renamed) << title.toStdString();
        EXPECT_EQ(renamed->fileName(), name);
        EXPECT_EQ(library.recordings().front().url, *renamed);
        EXPECT_EQ(files.names("Zivra"), QStringList(name));
        library.deleteRecording(*renamed);
    }
}

TEST_F(LibraryTest, LeavesTheFileWhereItCannotBeRenamed)
{
    const QUrl url = addRecording("before.mp4");
    addRecording("taken.mp4");
    Library library(files, movies);
    for (const char *title : {"", " \n", "before", "taken", " taken "}) {
        EXPECT_EQ(library.rename(url, title), std::nullopt) << title;
    }
    EXPECT_EQ(library.rename(url, QString(300, 'x')), std::nullopt) << "longer than any file name";
    files.moveFails = true;
    EXPECT_EQ(library.rename(url, "free"), std::nullopt);
    EXPECT_EQ(files.names("Zivra"), QStringList({"before.mp4", "taken.mp4"}));
}

TEST_F(LibraryTest, MovesToTheTrash)
{
    const QUrl url = addRecording("a.mp4");
    Library library(files, movies);
    files.trashFails = true;
    library.deleteRecording(url);
    EXPECT_EQ(titles(library), QStringList("a"));
    files.trashFails = false;
    library.deleteRecording(url);
    library.deleteRecording(url);
    EXPECT_TRUE(library.recordings().empty());
    EXPECT_EQ(files.trashed, std::vector{url});
}

TEST_F(LibraryTest, TrimsInPlace)
{
    for (const auto &[name, type] : {std::pair{"a.mp4", MovieFileType::Mpeg4},
                                     {"b.mov", MovieFileType::QuickTime},
                                     {"c.MOV", MovieFileType::Mpeg4}}) {
        const QUrl url = addRecording(name);
        movies.assets[url] = std::make_shared<FakeAsset>();
        Library library(files, movies);
        await(library.trim(url, {MediaTime::fromMilliseconds(500), MediaTime::fromMilliseconds(1500)}));
        const FakeMovieServices::Export &made = movies.exports.back();
        EXPECT_EQ(made.range.start, MediaTime::fromMilliseconds(500));
        EXPECT_EQ(made.type, type) << name;
        EXPECT_TRUE(made.url.fileName().startsWith(".trim-"));
        EXPECT_EQ(files.names("Zivra"), QStringList(name)) << "no temporary is left";
        QFile file(url.toLocalFile());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), "trimmed");
        library.deleteRecording(url);
    }
}

TEST_F(LibraryTest, KeepsTheWholeRecordingWhenATrimFails)
{
    const QUrl url = addRecording("a.mp4");
    Library library(files, movies);
    EXPECT_THROW(await(library.trim(url, {})), ZivraError) << "no movie";
    movies.assets[url] = std::make_shared<FakeAsset>();
    files.replaceFails = true;
    EXPECT_THROW(await(library.trim(url, {})), PlatformError);
    movies.exporting.error = std::make_exception_ptr(PlatformError("full"));
    EXPECT_THROW(await(library.trim(url, {})), PlatformError);
    QFile file(url.toLocalFile());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "movie");
    EXPECT_EQ(titles(library), QStringList("a"));
}

TEST_F(LibraryTest, MayGoWhileATrimRuns)
{
    const QUrl url = addRecording("a.mp4");
    movies.assets[url] = std::make_shared<FakeAsset>();
    movies.exporting.held = true;
    auto library = std::make_unique<Library>(files, movies);
    auto trimming = library->trim(url, {});
    library.reset();
    movies.exporting.release();
    await(std::move(trimming));
}

} // namespace zivra::test
