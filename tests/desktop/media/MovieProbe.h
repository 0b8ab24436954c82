#pragma once

#include <QUrl>

#include <vector>

namespace zivra::test {

/// What a player makes of a movie file: everything decoded by ffmpeg's own tools, times in seconds of the
/// movie.
struct MovieProbe {
    struct Picture {
        double time;
        int number; ///< as `numberedFrame` wrote it
    };
    /// The first channel at 48000 Hz, gaps filled with silence.
    struct Sound {
        std::vector<float> samples;

        [[nodiscard]] double end() const { return static_cast<double>(samples.size()) / 48000; }
        /// Times of what stands out, from a time on.
        [[nodiscard]] std::vector<double> clicks(double from = 0) const;
        void expectClicks(const std::vector<double> &expected, double from = 0) const;
    };

    /// Fails the running test for what cannot be decoded without a complaint.
    explicit MovieProbe(const QUrl &url);

    double duration = 0;
    std::vector<Picture> pictures;
    std::vector<Sound> sounds;
    QByteArray videoTag; ///< codec tag and colours
};

} // namespace zivra::test
