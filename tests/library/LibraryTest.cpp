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

struct LibraryTest : testing::Test {
    /// Made on that day, or without a date.
    QUrl addRecording(const QString &name, int day = 0)
    {
        const QDateTime created(QDate(2026, 3, day), QTime(12, 0), Qt::UTC);
        files.datesByName[name] = {created, created};
        const QUrl url = files.addFile("Zivra/" + name, "movie");
        movies.assets[url] = std::make_shared<FakeAsset>();
        return url;
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

TEST_F(LibraryTest, NamesNewFilesAfterTheTimeInItsFolder)
{
    Library library(files, movies);
    const QUrl url = library.newRecordingURL("mov");
    EXPECT_TRUE(url.fileName().contains(
        QRegularExpression("^Zivra \\d{4}-\\d\\d-\\d\\d at \\d\\d\\.\\d\\d\\.\\d\\d\\.mov$")));
    QFile(url.toLocalFile()).open(QIODevice::WriteOnly);
    library.refresh();
    ASSERT_EQ(library.recordings().size(), 1U);
    EXPECT_EQ(library.recordings().front().url, url) << "one file has one URL";
}

TEST_F(LibraryTest, ListsVisibleMoviesNewestFirst)
{
    addRecording("old.mp4", 1);
    addRecording("UPPER.MOV", 3);
    addRecording("unknown.mp4");
    addRecording("what % is #1?.mov", 2);
    for (const char *other : {".hidden.mp4", "notes.txt", "clip.m4v", "mp4", "folder.mp4/x.txt"}) {
        files.addFile(QString("Zivra/") + other);
    }
    Library library(files, movies);
    EXPECT_EQ(titles(library), QStringList({"UPPER", "what % is #1?", "old", "unknown"}));
    EXPECT_TRUE(QFile::exists(library.recordings().at(1).url.toLocalFile()));
    QDir(library.folder().toLocalFile()).removeRecursively();
    library.refresh();
    EXPECT_TRUE(library.recordings().empty());
}

TEST_F(LibraryTest, RenamesToASanitisedTitleOrNotAtAll)
{
    addRecording("taken.mp4", 1);
    QUrl url = addRecording("before.mp4", 2);
    Library library(files, movies);
    for (const char *title : {"", " \n", "before", " taken "}) {
        EXPECT_EQ(library.rename(url, title), std::nullopt) << title;
    }
    files.moveFails = true;
    EXPECT_EQ(library.rename(url, "free"), std::nullopt);
    files.moveFails = false;
    const std::map<QString, QString> table{
        {"a/b: c", "a-b- c"}, {"\n  spaced \t", "spaced"}, {"clip.mp4", "clip.mp4"}, {"50% #1", "50% #1"}};
    for (const auto &[title, name] : table) {
        url = library.rename(url, title).value_or(QUrl());
        EXPECT_EQ(files.names("Zivra"), QStringList({name + ".mp4", "taken.mp4"}));
        EXPECT_EQ(library.recordings().back().url, url);
    }
}

TEST_F(LibraryTest, MovesToTheTrash)
{
    const QUrl url = addRecording("a.mp4");
    Library library(files, movies);
    for (const bool fails : {true, false, false}) {
        files.trashFails = fails;
        library.deleteRecording(url);
        EXPECT_EQ(titles(library), fails ? QStringList("a") : QStringList());
    }
}

TEST_F(LibraryTest, CompletesWhatAnEarlierRunLeftBehind)
{
    movies.interrupted = {addRecording("a.mp4"), addRecording("b.mov")};
    Library library(files, movies);
    int changes = 0;
    QObject::connect(&library, &Library::recordingsChanged, [&] { ++changes; });
    await(library.completeInterrupted());
    EXPECT_TRUE(movies.interrupted.empty());
    EXPECT_EQ(changes, 1);
    await(library.completeInterrupted());
    EXPECT_EQ(changes, 1) << "nothing was left to do";
}

TEST_F(LibraryTest, TrimsInPlace)
{
    const MediaTimeRange range{MediaTime::fromMilliseconds(500), MediaTime::fromMilliseconds(1500)};
    for (const auto &[name, type] :
         {std::pair{"a.mp4", MovieFileType::Mpeg4}, {"b.mov", MovieFileType::QuickTime}}) {
        const QUrl url = addRecording(name);
        movies.exporting.held = true;
        auto library = std::make_unique<Library>(files, movies);
        auto trimming = library->trim(url, range);
        library.reset(); // may go meanwhile
        movies.exporting.release();
        await(std::move(trimming));
        EXPECT_EQ(movies.exports.back().range.start, range.start);
        EXPECT_EQ(movies.exports.back().type, type) << name;
        EXPECT_TRUE(movies.exports.back().url.fileName().startsWith(".trim-"));
        EXPECT_EQ(files.read(url), "trimmed");
        files.trashItem(url);
        EXPECT_TRUE(files.names("Zivra").isEmpty()) << "no temporary is left";
    }
}

TEST_F(LibraryTest, KeepsTheWholeRecordingWhenATrimFails)
{
    const QUrl url = addRecording("a.mp4");
    Library library(files, movies);
    files.replaceFails = true;
    EXPECT_THROW(await(library.trim(url, {})), PlatformError);
    movies.exporting.error = std::make_exception_ptr(PlatformError("full"));
    EXPECT_THROW(await(library.trim(url, {})), PlatformError);
    movies.assets.clear();
    EXPECT_THROW(await(library.trim(url, {})), ZivraError) << "no movie";
    EXPECT_EQ(files.read(url), "movie");
}

} // namespace zivra::test
