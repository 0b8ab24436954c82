#include "desktop/media/MovieProbe.h"

#include "desktop/media/TestMovie.h"
#include "support/Shell.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace zivra::test {

namespace {

/// What it complains of gets in too, and fails the test.
QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    return shell(QStringLiteral("%1 -v error '%2' 2>&1").arg(program, arguments.join("' '")));
}

/// A line for each stream or frame; what the tool adds of side data makes empty ones.
QList<QByteArray> probe(const QString &file, const QString &streams, const QString &entries)
{
    auto lines = outputOf("ffprobe", {"-select_streams", streams, "-show_entries", entries, "-of",
                                      "csv=print_section=0", file})
                     .split('\n');
    lines.removeAll(QByteArray());
    return lines;
}

int numberOf(const char *row)
{
    int number = 0;
    for (int stripe = 0; stripe < 12; ++stripe) {
        const auto luma = static_cast<unsigned char>(row[(2 * stripe + 1) * kWidth / 24]);
        number |= (luma > 125 ? 1 : 0) << stripe;
    }
    return number;
}

} // namespace

MovieProbe::MovieProbe(const QUrl &url)
{
    const auto file = url.toLocalFile();
    duration = probe(file, "v", "format=duration").value(0).toDouble();
    videoTag =
        probe(file, "v", "stream=codec_tag_string,color_range,color_space,color_transfer,color_primaries")
            .value(0);
    const auto times = probe(file, "v", "frame=best_effort_timestamp_time");
    const auto luma =
        times.empty()
            ? QByteArray()
            : outputOf("ffmpeg", {"-i", file, "-map", "0:v", "-vsync", "passthrough", "-enc_time_base", "-1",
                                  "-pix_fmt", "gray", "-f", "rawvideo", "-"});
    EXPECT_EQ(luma.size(), times.size() * kWidth * kHeight);
    for (qsizetype middle = kHeight / 2; middle * kWidth < luma.size(); middle += kHeight) {
        const auto time = times.value(middle / kHeight).split(',')[0].toDouble();
        pictures.push_back({time, numberOf(luma.data() + middle * kWidth)});
    }
    const auto tracks = probe(file, "a", "stream=index");
    for (const auto &track : tracks) {
        const auto bytes =
            outputOf("ffmpeg", {"-i", file, "-map", "0:" + track, "-af",
                                "pan=mono|c0=c0,aresample=48000:async=1:first_pts=0", "-f", "f32le", "-"});
        auto &samples = sounds.emplace_back().samples;
        samples.resize(static_cast<std::size_t>(bytes.size()) / sizeof(float));
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    }
}

std::vector<double> MovieProbe::Sound::clicks(double from) const
{
    std::vector<double> times;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double time = double(i) / 48000;
        if (time >= from && std::abs(samples[i]) > 0.2 && (times.empty() || time - times.back() > 0.05)) {
            times.push_back(time);
        }
    }
    return times;
}

void MovieProbe::Sound::expectClicks(const std::vector<double> &expected, double from) const
{
    const auto found = clicks(from);
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_NEAR(found[i], expected[i], 0.001);
    }
}

} // namespace zivra::test
