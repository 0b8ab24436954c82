#pragma once

#include <QUrl>

#include <string>
#include <vector>

namespace zivra::test {

/// What a player makes of a movie file: everything decoded, times in seconds of the movie.
struct MovieProbe {
    struct Picture {
        double time;
        int number; ///< as `numberedFrame` wrote it
    };
    struct Sound {
        double start = 0; ///< of the first sample
        int rate = 0;
        std::vector<float> samples; ///< of the first channel, gaps between packets filled with silence
        double peak = 0;            ///< of all channels
        int channels = 0;

        [[nodiscard]] double end() const { return start + static_cast<double>(samples.size()) / rate; }
        /// Times of what stands out by at least `level`, from a time on.
        [[nodiscard]] std::vector<double> clicks(float level = 0.3F, double from = 0) const;
        /// Amplitude of a tone within a stretch.
        [[nodiscard]] double tone(double hz, double from, double to) const;
    };

    /// Fails the running test for what cannot be decoded without a complaint.
    explicit MovieProbe(const QUrl &url);

    double duration = 0;
    double firstTime = 0;
    std::vector<Picture> pictures;
    std::vector<Sound> sounds;
    std::string videoTag; ///< codec tag and colours

private:
    void decode(const QUrl &url);
};

} // namespace zivra::test
