#include "capture/AudioMerger.h"

#include "capture/MovieFiles.h"
#include "capture/ZivraError.h"

#include <QCoroFuture>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPromise>

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace zivra {

namespace {

constexpr AudioFormat kMixFormat{48000, 2};

/// A stream to be copied. Both belong to the reader and the writer of the merge.
struct Pair {
    MovieReaderOutput &output;
    MovieWriterInput &input;
};

[[noreturn]] void throwFirst(const std::exception_ptr &first, const std::exception_ptr &second)
{
    if (first || second) {
        std::rethrow_exception(first ? first : second);
    }
    throw ZivraError(ZivraError::recordingFailed);
}

/// Connects the reader with the writer, video first.
std::vector<Pair> addPairs(const MovieAsset &asset, MovieReader &reader, MovieWriter &writer)
{
    std::vector<Pair> pairs;
    const std::vector<MovieTrack> videoTracks = asset.tracks(MediaType::Video);
    if (!videoTracks.empty()) {
        const MovieTrack &track = videoTracks.front();
        const auto format = track.formats.empty() ? nullptr : track.formats.front();
        pairs.push_back(
            {reader.addTrackOutput(track), writer.addPassthroughInput(format, track.preferredTransform)});
    }
    const AudioSettings settings{kMixFormat.sampleRate, kMixFormat.channels, 160000};
    pairs.push_back({reader.addAudioMixOutput(asset.tracks(MediaType::Audio), kMixFormat),
                     writer.addAudioInput(settings)});
    return pairs;
}

/// Copies one stream; lives as long as the writer may still call back. Used on the pump's queue only.
class Pump {
public:
    Pump(MovieReaderOutput &output, MovieWriterInput &input, const MovieWriter &writer)
        : m_output(output),
          m_input(input),
          m_writer(writer)
    {
        m_done.start();
    }

    [[nodiscard]] QFuture<void> done() const { return m_done.future(); }

    /// Goes on until the input has enough for now, or for good to the end.
    void run()
    {
        if (m_finished) {
            return;
        }
        while (!hasFailed()) {
            if (!m_input.isReadyForMoreMediaData()) {
                return;
            }
            const std::optional<MediaSample> sample = m_output.copyNextSample();
            if (!sample || !m_input.append(*sample)) {
                break;
            }
        }
        m_finished = true;
        m_input.markAsFinished();
        m_done.finish();
    }

private:
    [[nodiscard]] bool hasFailed() const { return m_writer.status() == MovieWriter::Status::Failed; }

    MovieReaderOutput &m_output;
    MovieWriterInput &m_input;
    const MovieWriter &m_writer;
    QPromise<void> m_done;
    bool m_finished = false; ///< once true, what the pump refers to may be gone
};

/// Copies the asset to a new file with its sound mixed into one track.
QCoro::Task<> writeMerged(std::shared_ptr<const MovieAsset> asset, QUrl url, MovieServices &movies,
                          SerialQueueFactory &queues)
{
    // The queues come first: they end last, when nothing refers to them any more.
    std::vector<std::shared_ptr<SerialQueue>> pumpQueues;
    const std::unique_ptr<MovieReader> reader = movies.makeReader(asset);
    const std::unique_ptr<MovieWriter> writer = movies.makeWriter(url, movieFileType(url));
    const std::vector<Pair> pairs = addPairs(*asset, *reader, *writer);
    if (!reader->startReading() || !writer->startWriting()) {
        throwFirst(reader->error(), writer->error());
    }
    writer->startSession(MediaTime::zero());

    std::vector<QFuture<void>> pumps;
    for (const Pair &pair : pairs) {
        const auto &queue =
            pumpQueues.emplace_back(queues.makeSerialQueue("zivra.merge." + std::to_string(pumps.size())));
        pumps.push_back(AudioMerger::pump(pair.output, pair.input, *writer, queue));
    }
    for (const QFuture<void> &pump : pumps) {
        co_await pump;
    }
    // A pump ends the same way when its source breaks off: only a source that was read to its end may
    // be replaced by the copy.
    if (writer->status() == MovieWriter::Status::Failed) {
        throwFirst(writer->error(), nullptr);
    }
    if (reader->status() != MovieReader::Status::Completed) {
        throwFirst(reader->error(), nullptr);
    }
    co_await writer->finishWriting();
    if (writer->status() != MovieWriter::Status::Completed) {
        throwFirst(writer->error(), nullptr);
    }
}

} // namespace

QFuture<void> AudioMerger::pump(MovieReaderOutput &output, MovieWriterInput &input, const MovieWriter &writer,
                                const std::shared_ptr<SerialQueue> &queue)
{
    const auto pump = std::make_shared<Pump>(output, input, writer);
    input.requestMediaDataWhenReady(queue, [pump] { pump->run(); });
    return pump->done();
}

QCoro::Task<> AudioMerger::mergeAudioTracksIfNeeded(QUrl url, MovieServices &movies, FileSystem &files,
                                                    SerialQueueFactory &queues)
{
    const std::shared_ptr<const MovieAsset> asset = co_await movies.openAsset(url);
    if (asset->tracks(MediaType::Audio).size() < 2) {
        co_return;
    }
    const bool isMerged = co_await movies.useReadyMix(url);
    if (isMerged) {
        co_return;
    }
    const QDir folder = QFileInfo(url.toLocalFile()).dir();
    const QUrl temporary = QUrl::fromLocalFile(folder.filePath(temporaryName(QLatin1String(".merge-"), url)));
    try {
        co_await writeMerged(asset, temporary, movies, queues);
    } catch (...) {
        QFile::remove(temporary.toLocalFile());
        throw;
    }
    files.replaceItem(url, temporary);
}

} // namespace zivra
