#pragma once

#include "desktop/media/ReaderOutput.h"

#include <memory>
#include <vector>

namespace zivra::desktop {

class FFmpegMovieReader final : public MovieReader {
public:
    explicit FFmpegMovieReader(std::shared_ptr<const MovieAsset> asset);

    MovieReaderOutput &addTrackOutput(const MovieTrack &track) override;
    MovieReaderOutput &addAudioMixOutput(const std::vector<MovieTrack> &tracks,
                                         const AudioFormat &format) override;
    [[nodiscard]] bool startReading() override;
    [[nodiscard]] Status status() const override { return m_progress.status(); }
    [[nodiscard]] std::exception_ptr error() const override { return m_progress.error(); }

private:
    const std::shared_ptr<const MovieAsset> m_asset;
    ReaderProgress m_progress;
    std::vector<std::unique_ptr<ReaderOutput>> m_outputs;
};

} // namespace zivra::desktop
