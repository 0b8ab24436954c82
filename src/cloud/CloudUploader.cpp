#include "cloud/CloudUploader.h"

#include "cloud/CloudError.h"
#include "cloud/MovieFacts.h"
#include "cloud/MultipartForm.h"
#include "platform/PlatformError.h"

#include <QCoroFuture>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QPromise>
#include <QTimer>

#include <cmath>
#include <utility>

namespace zivra {

/// A file on its way. Everything that waits looks here afterwards whether it is still wanted.
struct CloudUploader::Upload {
    CloudAPI api;
    QUrl file;
    QString name; ///< follows renames
    LinkHandler onLink;
    QFile source;
    bool isForgotten = false;
};

namespace {

constexpr auto kIndexName = ".zivra-cloud.json";
constexpr int kNotFound = 404;
constexpr int kFirstServerFault = 500;

/// The upload was forgotten while it waited.
struct Forgotten : std::exception {};

QFuture<void> sleepByTimer(std::chrono::seconds time)
{
    const auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    QTimer::singleShot(time, [promise] { promise->finish(); });
    return promise->future();
}

QString readFailureText(const QFile &file)
{
    return QStringLiteral("“%1” can’t be read: %2.").arg(QFileInfo(file).fileName(), file.errorString());
}

MultipartForm createForm(const QUrl &file, qint64 size, const MovieFacts &facts)
{
    const QFileInfo info(file.toLocalFile());
    const bool isQuickTime = info.suffix().toLower() == QLatin1String("mov");
    MultipartForm form;
    form.add("title", info.completeBaseName());
    form.add("size", QString::number(size));
    form.add("mime_type", isQuickTime ? QStringLiteral("video/quicktime") : QStringLiteral("video/mp4"));
    if (facts.duration && std::isfinite(*facts.duration)) {
        form.add("duration", QString::number(*facts.duration, 'f', 2));
    }
    if (facts.size) {
        form.add("width", QString::number(facts.size->width()));
        form.add("height", QString::number(facts.size->height()));
    }
    if (!facts.thumbnail.isEmpty()) {
        form.addFile("thumbnail", "thumbnail.jpg", "image/jpeg", facts.thumbnail);
    }
    return form;
}

bool isWorthAnotherTry(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const CloudError &error) {
        return error.code() != CloudError::http || error.status() >= kFirstServerFault;
    } catch (const TransportError &) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

CloudUploader::CloudUploader(CloudAccount &account, const QUrl &folder, MovieServices &movies,
                             HttpSender &sender, QObject *parent)
    : QObject(parent),
      m_account(account),
      m_movies(movies),
      m_sender(sender),
      m_index(folder.toLocalFile() + QLatin1Char('/') + QLatin1String(kIndexName)),
      m_sleep(sleepByTimer),
      m_remote(m_index.load())
{
    const QString host = QUrl(m_account.serverURL()).host();
    m_remote.removeIf([&host](RemoteVideos::iterator entry) { return QUrl(entry->shareURL).host() != host; });
}

CloudUploader::~CloudUploader()
{
    for (const UploadPtr &upload : std::as_const(m_running)) {
        upload->isForgotten = true;
    }
}

std::optional<RemoteVideo> CloudUploader::remoteVideo(const QUrl &file) const
{
    const auto found = m_remote.find(file.fileName());
    return found != m_remote.end() ? std::optional(*found) : std::nullopt;
}

void CloudUploader::upload(const QUrl &file, LinkHandler onLink)
{
    const QString name = file.fileName();
    if (m_progress.contains(name)) {
        return;
    }
    const std::optional<CloudAPI> api = m_account.api();
    if (!api) {
        setError(name, userText(CloudError(CloudError::notConnected)));
        return;
    }
    setError(name, std::nullopt);
    setProgress(name, 0);
    auto upload = std::make_shared<Upload>();
    upload->api = *api;
    upload->file = file;
    upload->name = name;
    upload->onLink = std::move(onLink);
    m_running.insert(name, upload);
    run(std::move(upload));
}

/// Sends a file, whatever comes of it.
QCoro::Task<> CloudUploader::run(UploadPtr upload)
{
    try {
        co_await send(upload);
    } catch (const Forgotten &) {
        co_return;
    } catch (const std::exception &error) {
        if (!upload->isForgotten) {
            fail(upload, error);
        }
        co_return;
    }
    m_running.remove(upload->name);
    setProgress(upload->name, std::nullopt);
}

/// Throws `Forgotten` before it would touch anything of an object that may be gone.
QCoro::Task<> CloudUploader::send(UploadPtr upload)
{
    upload->source.setFileName(upload->file.toLocalFile());
    if (!upload->source.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw PlatformError(readFailureText(upload->source));
    }
    const qint64 size = upload->source.size();
    abandonIfChanged(upload->name, size);
    std::optional<RemoteVideo> video = remoteVideo(upload->file);
    if (video && video->isReady()) {
        setProgress(upload->name, std::nullopt);
        handOver(upload, *video);
        co_return;
    }
    if (!video) {
        auto created = co_await createVideo(upload, size);
        video = created;
        store(upload->name, video);
    }
    handOver(upload, *video);
    auto chunks = co_await sendChunks(upload, *video);
    CloudRequest request =
        upload->api.request(QStringLiteral("api/videos/%1/complete").arg(video->id), "POST");
    request.http.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    auto response = co_await upload->api.send(request, "{\"chunks\":" + QByteArray::number(chunks) + "}");
    if (upload->isForgotten) {
        throw Forgotten();
    }
    video->status = RemoteVideo::kReady;
    store(upload->name, video);
}

/// A file that was changed since its copy was begun needs another copy. One that is ready stays what it is.
void CloudUploader::abandonIfChanged(const QString &name, qint64 size)
{
    const auto entry = m_remote.find(name);
    if (entry != m_remote.end() && !entry->isReady() && entry->size != size) {
        m_remote.erase(entry);
        Q_EMIT changed(name);
    }
}

QCoro::Task<RemoteVideo> CloudUploader::createVideo(UploadPtr upload, qint64 size)
{
    auto facts = co_await movieFacts(upload->file, m_movies);
    if (upload->isForgotten) {
        throw Forgotten();
    }
    const MultipartForm form = createForm(upload->file, size, facts);
    CloudRequest request = upload->api.request(QStringLiteral("api/videos"), "POST");
    request.http.setHeader(QNetworkRequest::ContentTypeHeader, form.contentType());
    auto response = co_await upload->api.send(request, form.finalized());
    if (upload->isForgotten) {
        throw Forgotten();
    }
    co_return createdVideo(response, size);
}

/// Returns how many there were.
QCoro::Task<int> CloudUploader::sendChunks(UploadPtr upload, RemoteVideo video)
{
    const qint64 chunkSize = usableChunkSize(video.chunkSize);
    const qint64 size = upload->source.size();
    int index = 0;
    QByteArray data; // keeps its memory from chunk to chunk
    for (qint64 sent = 0;; ++index) {
        data.resize(chunkSize);
        data.truncate(upload->source.read(data.data(), chunkSize));
        if (data.isEmpty()) {
            break;
        }
        const QString path = QStringLiteral("api/videos/%1/chunks/%2");
        co_await sendChunk(upload, path.arg(video.id, QString::number(index)), data);
        sent += data.size();
        setProgress(upload->name, size < 1 ? 1.0 : static_cast<double>(sent) / static_cast<double>(size));
    }
    if (upload->source.error() != QFileDevice::NoError) {
        throw PlatformError(readFailureText(upload->source));
    }
    co_return index;
}

/// Tries four times while the server or the way to it fails, with 1, 4 and 9 seconds in between.
QCoro::Task<> CloudUploader::sendChunk(UploadPtr upload, QString path, QByteArray data)
{
    constexpr int kMostRetries = 3;
    CloudRequest request = upload->api.request(path, "PUT");
    request.http.setHeader(QNetworkRequest::ContentTypeHeader, "application/octet-stream");
    for (int attempt = 0;; ++attempt) {
        std::exception_ptr failure;
        try {
            auto response = co_await upload->api.send(request, data, m_sender);
        } catch (...) {
            failure = std::current_exception();
        }
        if (upload->isForgotten) {
            throw Forgotten();
        }
        if (!failure) {
            co_return;
        }
        if (attempt == kMostRetries || !isWorthAnotherTry(failure)) {
            std::rethrow_exception(failure);
        }
        co_await m_sleep(std::chrono::seconds((attempt + 1) * (attempt + 1)));
        if (upload->isForgotten) {
            throw Forgotten();
        }
    }
}

void CloudUploader::handOver(const UploadPtr &upload, const RemoteVideo &video)
{
    if (const LinkHandler onLink = std::exchange(upload->onLink, {})) {
        onLink(video.shareURL);
    }
}

void CloudUploader::fail(const UploadPtr &upload, const std::exception &error)
{
    m_running.remove(upload->name);
    setProgress(upload->name, std::nullopt);
    setError(upload->name, userText(error));
    const auto *answer = dynamic_cast<const CloudError *>(&error);
    if (answer != nullptr && answer->status() == kNotFound) {
        store(upload->name, std::nullopt);
    }
}

void CloudUploader::moveEntry(const QUrl &from, const QUrl &to)
{
    const QString before = from.fileName();
    const QString name = to.fileName();
    if (const UploadPtr upload = m_running.take(before)) {
        upload->file = to;
        upload->name = name;
        m_running.insert(name, upload);
        const double progress = m_progress.value(before);
        setProgress(before, std::nullopt);
        setProgress(name, progress);
    }
    if (const auto video = remoteVideo(from)) {
        m_remote.remove(before);
        Q_EMIT changed(before);
        store(name, video);
    }
}

void CloudUploader::forget(const QUrl &file)
{
    const QString name = file.fileName();
    if (const UploadPtr upload = m_running.take(name)) {
        upload->isForgotten = true;
        setProgress(name, std::nullopt);
    }
    if (m_remote.contains(name)) {
        store(name, std::nullopt);
    }
}

void CloudUploader::store(const QString &name, const std::optional<RemoteVideo> &video)
{
    if (video) {
        m_remote.insert(name, *video);
    } else {
        m_remote.remove(name);
    }
    m_index.save(m_remote);
    Q_EMIT changed(name);
}

void CloudUploader::setProgress(const QString &name, std::optional<double> progress)
{
    if (progress) {
        m_progress.insert(name, *progress);
    } else {
        m_progress.remove(name);
    }
    Q_EMIT changed(name);
}

void CloudUploader::setError(const QString &name, const std::optional<QString> &text)
{
    if (text) {
        m_errors.insert(name, *text);
    } else {
        m_errors.remove(name);
    }
    Q_EMIT changed(name);
}

} // namespace zivra
