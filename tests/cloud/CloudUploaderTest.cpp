#include "cloud/CloudUploader.h"

#include "desktop/network/CurlSender.h"
#include "support/CloudServer.h"
#include "support/Eventually.h"
#include "support/PrintQt.h"
#include "support/fakes/FakeCloudDesktop.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeFileSystem.h"
#include "support/fakes/FakeMovieServices.h"
#include "support/fakes/FakeUserDefaults.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace zivra::test {

namespace {

using Request = CloudServer::Request;
using Fault = CloudServer::Fault;

bool isChunk(const Request &request)
{
    return request.method == "PUT";
}

struct CloudUploaderTest : testing::Test {
    CloudUploaderTest()
    {
        account.setServerURL(server.url());
        account.useManualToken("1|abc");
        server.setChunkSize("1000");
        restart();
    }
    void restart()
    {
        uploader = std::make_unique<CloudUploader>(account, files.moviesDirectory(), movies, sender);
        uploader->setSleep([this](std::chrono::seconds time) {
            sleeps.push_back(static_cast<int>(time.count()));
            return QtFuture::makeReadyFuture();
        });
    }
    QUrl addMovie(qsizetype size, const QString &name = "a.mp4") const
    {
        QByteArray content(size, ' ');
        std::generate(content.begin(), content.end(), [byte = size]() mutable { return char(byte++ % 251); });
        return files.addFile(name, content);
    }
    void start(const QUrl &file)
    {
        uploader->upload(file, [this](const QString &link) { links << link; });
    }
    [[nodiscard]] bool ends() const
    {
        return eventually([this] { return uploader->progress().isEmpty(); });
    }
    /// What became of a movie: its state, its error and how often the server was asked to take it.
    QString upload(const QUrl &file)
    {
        start(file);
        EXPECT_TRUE(ends());
        const auto remote = uploader->remoteVideo(file);
        return (remote ? remote->status : "none") + '|' + uploader->errors().value(file.fileName());
    }

    FakeFileSystem files;
    FakeMovieServices movies;
    FakeUserDefaults defaults;
    FakeSecretStore secrets;
    FakeWorkspace workspace;
    FakeAlerts alerts;
    CloudServer server;
    desktop::CurlSender sender;
    CloudAccount account{{defaults, secrets, workspace, alerts, "here"}};
    std::unique_ptr<CloudUploader> uploader;
    QStringList links;
    std::vector<int> sleeps;
};

} // namespace

TEST_F(CloudUploaderTest, SendsEveryByteAndTheLinkFirst)
{
    int number = 0;
    for (const qsizetype size : {0, 1, 999, 1000, 1001, 5500}) {
        const QUrl file = addMovie(size, QString("%1.mp4").arg(size));
        EXPECT_EQ(upload(file), "ready|");
        const auto video = server.videos().at("v" + std::to_string(++number));
        EXPECT_EQ(video.content(), FakeFileSystem::read(file));
        EXPECT_EQ(video.count, (size + 999) / 1000);
        EXPECT_EQ(links.size(), number);
    }
    auto asset = std::make_shared<FakeAsset>();
    asset->length = MediaTime::fromSeconds(12.345);
    asset->location = addMovie(3000, "q \"ä\r\n.MOV");
    asset->allTracks = {{.type = MediaType::Video,
                         .formats = {},
                         .preferredTransform = TrackTransform{0, 65536, 0, -65536, 0, 0, 0, 0, 1 << 30},
                         .naturalSize = {1920, 1080}}};
    movies.assets[asset->location] = asset;
    bool isLinkFirst = false;
    server.setFault([&](const Request &request) -> std::optional<Fault> {
        isLinkFirst |= isChunk(request) && links.size() == number + 1;
        return std::nullopt;
    });
    EXPECT_EQ(upload(asset->location), "ready|");
    EXPECT_TRUE(isLinkFirst);
    const auto requests = server.requests();
    const auto create = std::find_if(requests.rbegin(), requests.rend(),
                                     [](const Request &each) { return each.path == "/api/videos"; });
    for (const auto *part :
         {"\"title\"\r\n\r\nq \"ä\r\n\r\n", "\"size\"\r\n\r\n3000", "video/quicktime", "\r\n\r\n12.35",
          "\"width\"\r\n\r\n1080\r\n", "\"height\"\r\n\r\n1920\r\n", "picture"}) {
        EXPECT_TRUE(create->body.contains(part)) << part;
    }
    restart();
    EXPECT_EQ(uploader->remote().size(), 7);
    const auto before = server.requests().size();
    EXPECT_EQ(upload(asset->location), "ready|");
    EXPECT_EQ(links.back(), uploader->remoteVideo(asset->location)->shareURL);
    EXPECT_EQ(server.requests().size(), before) << "what is shared is shared";
}

TEST_F(CloudUploaderTest, TriesAgainAndResumesUnderTheSameLink)
{
    const QUrl file = addMovie(2500);
    int failures = 0;
    const auto failing = [&](int times, const Fault &fault) {
        failures = times;
        server.setFault([&failures, fault](const Request &request) {
            return isChunk(request) && failures-- > 0 ? std::optional(fault) : std::nullopt;
        });
    };
    failing(100, {.status = 503});
    EXPECT_EQ(upload(file), "uploading|The server returned an error (503).");
    EXPECT_EQ(sleeps, (std::vector{1, 4, 9}));
    failing(100, {.cuts = true});
    EXPECT_TRUE(upload(file).startsWith("uploading|"));
    EXPECT_EQ(sleeps.size(), 6U);
    failing(1, {.status = 413, .body = R"({"message":"too much"})"});
    EXPECT_EQ(upload(file), "uploading|too much");
    EXPECT_EQ(sleeps.size(), 6U) << "that would not help";
    restart();
    failing(3, {.status = 500});
    EXPECT_EQ(upload(file), "ready|");
    EXPECT_EQ(links.removeDuplicates(), 3) << "one link for all of them";
    EXPECT_EQ(server.videos().at("v1").content(), FakeFileSystem::read(file));
}

TEST_F(CloudUploaderTest, BeginsAnewWhereTheOldCopyIsOfNoUse)
{
    const QUrl file = addMovie(2500);
    server.setFault([](const Request &each) {
        return isChunk(each) ? std::optional(Fault{.status = 404}) : std::nullopt;
    });
    EXPECT_EQ(upload(file), "none|The server returned an error (404).");
    server.setFault([](const Request &each) {
        return isChunk(each) ? std::optional(Fault{.status = 422}) : std::nullopt;
    });
    EXPECT_EQ(upload(file), "uploading|The server returned an error (422).");
    addMovie(2600);
    server.setFault({});
    EXPECT_EQ(upload(file), "ready|");
    EXPECT_EQ(links.size(), 3);
    EXPECT_EQ(links.removeDuplicates(), 0);
    account.setServerURL("http://localhost:1");
    restart();
    EXPECT_TRUE(uploader->remote().isEmpty()) << "the link is another server's";

    account.setServerURL(server.url());
    for (const auto *created :
         {"[]", "{", R"({"data":{"id":1,"share_url":"x"}})", R"({"data":{"id":"x"}})"}) {
        server.setFault([created](const Request &) { return Fault{.body = created}; });
        EXPECT_TRUE(upload(addMovie(10, "b.mp4")).startsWith("none|")) << created;
        EXPECT_FALSE(uploader->errors().value("b.mp4").isEmpty());
    }
    account.disconnect();
    EXPECT_EQ(upload(file), "none|Connect your Zivra account first.");
    EXPECT_EQ(links.size(), 3);
}

TEST_F(CloudUploaderTest, FollowsFilesThatAreRenamedOrDeleted)
{
    const QUrl file = addMovie(2500);
    const QUrl renamed = files.moviesDirectory().resolved(QUrl("b.mp4"));
    const QUrl other = addMovie(2500, "c.mp4");
    start(file);
    start(file);
    start(other);
    ASSERT_TRUE(eventually([this] { return links.size() == 2; }));
    uploader->moveEntry(file, renamed);
    uploader->forget(other);
    EXPECT_TRUE(ends());
    EXPECT_EQ(uploader->remote().keys(), QStringList("b.mp4"));
    EXPECT_TRUE(uploader->remote().value("b.mp4").isReady());
    EXPECT_TRUE(uploader->errors().isEmpty());
    EXPECT_EQ(links.size(), 2) << "one upload at a time";
    start(addMovie(5000, "d.mp4"));
    uploader.reset();
    EXPECT_FALSE(eventually([] { return false; }, std::chrono::milliseconds(100)));
}

TEST_F(CloudUploaderTest, EndsWellOrInWordsInAStormOfFaults)
{
    constexpr int kMovies = 300;
    constexpr int kLargestMovie = 400'000; // bytes
    std::mt19937 random(1);
    std::vector<QUrl> movies;
    for (int number = 0; number < kMovies; ++number) {
        movies.push_back(addMovie(random() % kLargestMovie, QString("%1.mp4").arg(number)));
    }
    const std::vector<Fault> faults{{.status = 500},
                                    {.cuts = true},
                                    {.status = 503, .body = "{"},
                                    {.status = 404},
                                    {.status = 422},
                                    {.body = "lost"},
                                    {.body = "[[", .delay = 50},
                                    {.status = 429},
                                    {.status = 307, .location = "http://localhost/"}};
    std::set<std::string> doomed; // the requests that the uploader is not to try again
    std::map<std::string, int> failures;
    int count = 0;
    const auto storm = [&](const Request &request) -> std::optional<Fault> {
        if (++count % 10 != 0) {
            return std::nullopt;
        }
        if (request.path.ends_with("/complete")) {
            doomed.insert(request.path.substr(0, request.path.rfind('/')));
            return Fault{.status = 500};
        }
        const Fault &fault = faults[static_cast<std::size_t>(count / 10) % faults.size()];
        const bool isTransient =
            isChunk(request) && (fault.status >= 500 || fault.cuts || !fault.location.empty());
        if (!isTransient || ++failures[request.path] == 4) {
            doomed.insert(request.path.substr(0, request.path.find('/', std::strlen("/api/videos/"))));
        }
        return fault;
    };
    const auto uploadAll = [&] {
        for (std::size_t first = 0; first < movies.size(); first += 10) {
            server.setChunkSize(std::to_string(655 + random() % 80'000));
            std::for_each_n(movies.begin() + static_cast<std::ptrdiff_t>(first), 10,
                            [&](const QUrl &each) { start(each); });
            ASSERT_TRUE(ends());
        }
    };
    server.setFault(storm);
    uploadAll();
    const RemoteVideos begun = uploader->remote();
    int ready = 0;
    for (const QUrl &movie : movies) {
        const auto remote = uploader->remoteVideo(movie);
        const bool isReady = remote && remote->isReady();
        EXPECT_EQ(isReady, remote && !doomed.contains("/api/videos/" + remote->id.toStdString()))
            << qPrintable(movie.fileName());
        EXPECT_EQ(isReady, uploader->errors().value(movie.fileName()).isEmpty())
            << qPrintable(movie.fileName());
        ready += isReady ? 1 : 0;
    }
    EXPECT_GT(ready, 0);
    EXPECT_LT(ready, kMovies);
    server.setFault({});
    uploadAll();
    const auto videos = server.videos();
    for (const QUrl &movie : movies) {
        const RemoteVideo remote = uploader->remoteVideo(movie).value_or(RemoteVideo{});
        EXPECT_TRUE(remote.isReady());
        EXPECT_EQ(videos.at(remote.id.toStdString()).content(), FakeFileSystem::read(movie))
            << qPrintable(movie.fileName());
        EXPECT_EQ(remote.shareURL, begun.value(movie.fileName(), remote).shareURL);
    }
    EXPECT_FALSE(server.hasSeenOverlap());
}

TEST(UploadIndex, IgnoresWhatIsDamaged)
{
    const RemoteVideos videos{{"a.mp4", {"1", "https://x/s/1", "ready", 1LL << 40, 8 << 20}}};
    EXPECT_EQ(remoteVideosFromJson(toJson(videos)), videos);
    const QByteArray good = toJson(videos);
    for (const auto &[from, to] : std::vector<std::pair<QByteArray, QByteArray>>{{"\"id\":\"1\"", "\"id\":1"},
                                                                                 {"\"ready\"", "null"},
                                                                                 {"8388608", "8.5"},
                                                                                 {"8388608", "1e300"},
                                                                                 {"\"size\"", "\"sice\""},
                                                                                 {"}}", "}"},
                                                                                 {"{\"a.mp4\":", "[1,"}}) {
        EXPECT_TRUE(remoteVideosFromJson(QByteArray(good).replace(from, to)).isEmpty()) << from.data();
    }
}

} // namespace zivra::test
