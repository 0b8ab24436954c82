#pragma once

#include "platform/MovieAsset.h"
#include "platform/PlatformError.h"
#include "support/fakes/FakeMovieWriter.h"

#include <algorithm>
#include <map>
#include <set>

namespace zivra::test {

class FakeTrackFormat final : public TrackFormat {};

/// A movie file in the test's words.
class FakeAsset final : public MovieAsset {
public:
    QUrl location;
    MediaTime length;
    std::vector<MovieTrack> allTracks;

    [[nodiscard]] QUrl url() const override { return location; }
    [[nodiscard]] MediaTime duration() const override { return length; }
    [[nodiscard]] std::vector<MovieTrack> tracks(MediaType type) const override
    {
        std::vector<MovieTrack> found;
        std::ranges::copy_if(allTracks, std::back_inserter(found),
                             [type](const MovieTrack &track) { return track.type == type; });
        return found;
    }
};

/// Movies without a file behind them.
class FakeMovieServices final : public MovieServices {
public:
    struct Export {
        QUrl source;
        MediaTimeRange range;
        QUrl url;
        MovieFileType type = MovieFileType::Mpeg4;
    };

    std::map<QUrl, std::shared_ptr<FakeAsset>> assets;
    std::exception_ptr makeWriterError;
    std::function<void(WriterRecord &)> onWriter; ///< scripts each writer that is made
    std::vector<std::shared_ptr<WriterRecord>> writers;
    std::vector<Export> exports;
    std::set<QUrl> interrupted; ///< movies whose writers died
    ScriptedResult<void> exporting;

    std::unique_ptr<MovieWriter> makeWriter(const QUrl &url, MovieFileType type) override
    {
        if (makeWriterError) {
            std::rethrow_exception(makeWriterError);
        }
        auto record = writers.emplace_back(std::make_shared<WriterRecord>());
        record->url = url;
        record->type = type;
        if (onWriter) {
            onWriter(*record);
        }
        return std::make_unique<FakeMovieWriter>(std::move(record));
    }
    QFuture<std::shared_ptr<const MovieAsset>> openAsset(const QUrl &url) override
    {
        ScriptedResult<std::shared_ptr<const MovieAsset>> result;
        const auto found = assets.find(url);
        if (found == assets.end()) {
            result.error = std::make_exception_ptr(PlatformError(QStringLiteral("Not a movie.")));
            return result.answer();
        }
        return result.answer(found->second);
    }
    std::unique_ptr<MovieReader> makeReader(std::shared_ptr<const MovieAsset>) override
    {
        throw PlatformError(QStringLiteral("There is nothing to read."));
    }
    QFuture<void> exportPassthrough(std::shared_ptr<const MovieAsset> asset, const MediaTimeRange &range,
                                    const QUrl &url, MovieFileType type) override
    {
        exports.push_back({asset->url(), range, url, type});
        QFile file(url.toLocalFile());
        if (file.open(QIODevice::WriteOnly)) {
            file.write("trimmed");
        }
        return exporting.answer();
    }
    QFuture<QByteArray> stillJPEG(std::shared_ptr<const MovieAsset>, MediaTime, const QSize &,
                                  double) override
    {
        return QtFuture::makeReadyFuture(QByteArray("picture"));
    }
    QFuture<bool> completeInterrupted(const QUrl &url) override
    {
        return QtFuture::makeReadyFuture(interrupted.erase(url) > 0);
    }
    QFuture<bool> useReadyMix(const QUrl &) override { return QtFuture::makeReadyFuture(false); }
};

} // namespace zivra::test
