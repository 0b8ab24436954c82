#include "desktop/media/FFmpegMovieServices.h"

#include "desktop/media/FFmpegHandles.h"
#include "desktop/media/FFmpegMovieAsset.h"
#include "desktop/media/FFmpegMovieReader.h"
#include "desktop/media/FFmpegMovieWriter.h"
#include "desktop/media/PassthroughExporter.h"
#include "desktop/media/PlainMovie.h"
#include "desktop/media/StillImage.h"
#include "platform/PlatformError.h"

#include <QPromise>

#include <utility>

namespace zivra::desktop {

namespace {

const auto kNoMovie = QStringLiteral("There is no movie to read.");

/// Refuses what is not on this machine's file system.
const QUrl &fileUrl(const QUrl &url)
{
    if (!url.isLocalFile()) {
        throw PlatformError(QStringLiteral("“%1” is not a file.").arg(url.toDisplayString()));
    }
    return url;
}

/// Runs `work`, whose result or exception becomes that of the future, on a thread of the pool.
template <typename Result, typename Work>
QFuture<Result> runOn(QThreadPool &threads, Work work)
{
    auto promise = std::make_shared<QPromise<Result>>();
    auto future = promise->future();
    promise->start();
    threads.start([promise = std::move(promise), work = std::move(work)] {
        try {
            if constexpr (std::is_void_v<Result>) {
                work();
            } else {
                promise->addResult(work());
            }
        } catch (...) {
            promise->setException(std::current_exception());
        }
        promise->finish();
    });
    return future;
}

} // namespace

FFmpegMovieServices::FFmpegMovieServices()
{
    quietLibraries();
}

FFmpegMovieServices::~FFmpegMovieServices()
{
    m_threads.waitForDone();
}

std::unique_ptr<MovieWriter> FFmpegMovieServices::makeWriter(const QUrl &url, MovieFileType type)
{
    return std::make_unique<FFmpegMovieWriter>(fileUrl(url), type);
}

QFuture<std::shared_ptr<const MovieAsset>> FFmpegMovieServices::openAsset(const QUrl &url)
{
    return runOn<std::shared_ptr<const MovieAsset>>(
        m_threads, [url] { return std::make_shared<const FFmpegMovieAsset>(fileUrl(url)); });
}

std::unique_ptr<MovieReader> FFmpegMovieServices::makeReader(std::shared_ptr<const MovieAsset> asset)
{
    if (!asset) {
        throw PlatformError(kNoMovie);
    }
    return std::make_unique<FFmpegMovieReader>(std::move(asset));
}

QFuture<void> FFmpegMovieServices::exportPassthrough(std::shared_ptr<const MovieAsset> asset,
                                                     const MediaTimeRange &range, const QUrl &url,
                                                     MovieFileType type)
{
    return runOn<void>(m_threads, [asset = std::move(asset), range, url, type] {
        if (!asset) {
            throw PlatformError(kNoMovie);
        }
        exportStretch(*asset, range, fileUrl(url).toLocalFile(), type);
    });
}

QFuture<QByteArray> FFmpegMovieServices::stillJPEG(std::shared_ptr<const MovieAsset> asset, MediaTime time,
                                                   const QSize &maximum, double quality)
{
    return runOn<QByteArray>(m_threads, [asset = std::move(asset), time, maximum, quality] {
        if (!asset) {
            throw PlatformError(kNoMovie);
        }
        return desktop::stillJPEG(*asset, time, maximum, quality);
    });
}

QFuture<bool> FFmpegMovieServices::completeInterrupted(const QUrl &url)
{
    return runOn<bool>(m_threads, [url] { return makePlainMovie(fileUrl(url).toLocalFile()); });
}

QFuture<bool> FFmpegMovieServices::useReadyMix(const QUrl &url)
{
    return runOn<bool>(m_threads, [url] { return desktop::useReadyMix(fileUrl(url).toLocalFile()); });
}

} // namespace zivra::desktop
