#include "desktop/media/FFmpegMovieReader.h"

#include "desktop/media/AudioMixOutput.h"
#include "desktop/media/TrackOutput.h"

#include <QUrl>

namespace zivra::desktop {

FFmpegMovieReader::FFmpegMovieReader(std::shared_ptr<const MovieAsset> asset) : m_asset(std::move(asset)) {}

MovieReaderOutput &FFmpegMovieReader::addTrackOutput(const MovieTrack &track)
{
    return *m_outputs.emplace_back(
        std::make_unique<TrackOutput>(m_progress, m_asset->url().toLocalFile(), track.index));
}

MovieReaderOutput &FFmpegMovieReader::addAudioMixOutput(const std::vector<MovieTrack> &tracks,
                                                        const AudioFormat &format)
{
    std::vector<int> indices;
    indices.reserve(tracks.size());
    for (const auto &track : tracks) {
        indices.push_back(track.index);
    }
    return *m_outputs.emplace_back(std::make_unique<AudioMixOutput>(m_progress, m_asset->url().toLocalFile(),
                                                                    std::move(indices), format));
}

bool FFmpegMovieReader::startReading()
{
    if (status() != Status::Unknown) {
        return false;
    }
    try {
        for (const auto &output : m_outputs) {
            output->open();
        }
    } catch (...) {
        m_progress.fail(std::current_exception());
        return false;
    }
    m_progress.start(m_outputs.size());
    return true;
}

} // namespace zivra::desktop
