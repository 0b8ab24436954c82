#pragma once

#include "platform/MovieAsset.h"

#include <QThreadPool>

namespace zivra::desktop {

/// Movie files by libav*. What may take a while runs on threads of its own; destroying it waits for that.
class FFmpegMovieServices final : public MovieServices {
public:
    FFmpegMovieServices();
    ~FFmpegMovieServices() override;

    [[nodiscard]] std::unique_ptr<MovieWriter> makeWriter(const QUrl &url, MovieFileType type) override;
    [[nodiscard]] QFuture<std::shared_ptr<const MovieAsset>> openAsset(const QUrl &url) override;
    [[nodiscard]] std::unique_ptr<MovieReader> makeReader(std::shared_ptr<const MovieAsset> asset) override;
    [[nodiscard]] QFuture<void> exportPassthrough(std::shared_ptr<const MovieAsset> asset,
                                                  const MediaTimeRange &range, const QUrl &url,
                                                  MovieFileType type) override;
    [[nodiscard]] QFuture<QByteArray> stillJPEG(std::shared_ptr<const MovieAsset> asset, MediaTime time,
                                                const QSize &maximum, double quality) override;
    [[nodiscard]] QFuture<bool> completeInterrupted(const QUrl &url) override;
    [[nodiscard]] QFuture<bool> useReadyMix(const QUrl &url) override;

private:
    QThreadPool m_threads;
};

} // namespace zivra::desktop
