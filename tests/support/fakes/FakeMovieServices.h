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
    std::vector<MediaSample> videoSamples; ///< of every video track
    std::vector<MediaSample> mixSamples;   ///< of any mix

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

struct ReaderRecord {
    bool startFails = false;     ///< with whatever `error` is
    bool breaksAtTheEnd = false; ///< the samples stop early and the status is `Failed`
    std::exception_ptr error;
    std::vector<MovieTrack> mixedTracks;
    AudioFormat mixFormat;
    std::size_t unfinishedOutputs = 0;
};

class FakeMovieReader final : public MovieReader {
public:
    FakeMovieReader(std::shared_ptr<const FakeAsset> asset, std::shared_ptr<ReaderRecord> record)
        : m_asset(std::move(asset)),
          m_record(std::move(record))
    {
    }

    MovieReaderOutput &addTrackOutput(const MovieTrack &) override
    {
        return addOutput(m_asset->videoSamples);
    }
    MovieReaderOutput &addAudioMixOutput(const std::vector<MovieTrack> &tracks,
                                         const AudioFormat &format) override
    {
        m_record->mixedTracks = tracks;
        m_record->mixFormat = format;
        return addOutput(m_asset->mixSamples);
    }
    bool startReading() override { return !m_record->startFails; }
    [[nodiscard]] Status status() const override
    {
        if (m_record->unfinishedOutputs > 0) {
            return Status::Reading;
        }
        return m_record->breaksAtTheEnd ? Status::Failed : Status::Completed;
    }
    [[nodiscard]] std::exception_ptr error() const override { return m_record->error; }

private:
    class Output final : public MovieReaderOutput {
    public:
        Output(std::vector<MediaSample> samples, ReaderRecord &record)
            : m_samples(std::move(samples)),
              m_record(record)
        {
        }
        std::optional<MediaSample> copyNextSample() override
        {
            if (m_next < m_samples.size()) {
                return m_samples[m_next++];
            }
            m_record.unfinishedOutputs -= std::exchange(m_isUnfinished, 0U);
            return std::nullopt;
        }

    private:
        std::vector<MediaSample> m_samples;
        ReaderRecord &m_record;
        std::size_t m_next = 0;
        unsigned m_isUnfinished = 1;
    };

    MovieReaderOutput &addOutput(const std::vector<MediaSample> &samples)
    {
        ++m_record->unfinishedOutputs;
        return *m_outputs.emplace_back(std::make_unique<Output>(samples, *m_record));
    }

    std::shared_ptr<const FakeAsset> m_asset;
    std::shared_ptr<ReaderRecord> m_record;
    std::vector<std::unique_ptr<Output>> m_outputs;
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
    std::function<void(ReaderRecord &)> onReader; ///< scripts each reader that is made
    std::vector<std::shared_ptr<WriterRecord>> writers;
    std::vector<Export> exports;
    std::set<QUrl> interrupted; ///< movies whose writers died
    std::set<QUrl> mixed;       ///< movies that hold a ready mix
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
    std::unique_ptr<MovieReader> makeReader(std::shared_ptr<const MovieAsset> asset) override
    {
        auto record = std::make_shared<ReaderRecord>();
        if (onReader) {
            onReader(*record);
        }
        reader = record;
        return std::make_unique<FakeMovieReader>(std::dynamic_pointer_cast<const FakeAsset>(asset), record);
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
    QFuture<bool> useReadyMix(const QUrl &url) override
    {
        return QtFuture::makeReadyFuture(mixed.erase(url) > 0);
    }

    std::shared_ptr<ReaderRecord> reader; ///< the latest
};

} // namespace zivra::test
