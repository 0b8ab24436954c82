#include "desktop/audio/PrivateSoundServer.h"

#include "desktop/audio/SoundRecording.h"

#include <QFile>

#include <gtest/gtest.h>
#include <pulse/simple.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>
#include <utility>

namespace zivra::desktop::test {

namespace {

/// What a command of the shell prints, trimmed. Not by way of `QProcess`: after it the thread sanitizer
/// overlooks the locks that the calling thread takes.
QString shell(const QString &command)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> output(popen(qPrintable(command), "r"), pclose);
    QFile text;
    EXPECT_TRUE(output && text.open(output.get(), QIODevice::ReadOnly));
    return QString::fromUtf8(text.readAll()).trimmed();
}

} // namespace

PrivateSoundServer::PrivateSoundServer()
{
    qputenv("PULSE_SERVER", "unix:" + m_directory.filePath("socket").toLocal8Bit());
    QFile script(m_directory.filePath("script"));
    EXPECT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("load-module module-native-protocol-unix auth-anonymous=1 socket=" +
                 m_directory.filePath("socket").toLocal8Bit() +
                 "\nload-module module-null-sink sink_name=out norewinds=1"
                 "\nload-module module-null-sink sink_name=mic_feed norewinds=1 rate=32000 channels=1\n" +
                 kLoadMicrophone + "\nset-default-sink out\nset-default-source mic\n");
}

PrivateSoundServer::~PrivateSoundServer()
{
    kill();
}

void PrivateSoundServer::start()
{
    const auto start =
        QStringLiteral("env -u PULSE_SERVER XDG_RUNTIME_DIR=%1 HOME=%1 pulseaudio -n -F %1/script "
                       "--exit-idle-time=20 --disable-shm --use-pid-file=no --daemonize=no "
                       ">%1/log 2>&1 & echo $!");
    m_process = shell(start.arg(m_directory.path()));
    ASSERT_TRUE(comesTrue([this] { return control("info").contains("Default Source: mic"); }));
}

void PrivateSoundServer::kill()
{
    if (!m_process.isEmpty()) {
        shell("kill -9 " + std::exchange(m_process, {}));
    }
}

QString PrivateSoundServer::control(const QString &arguments) const
{
    return shell("pactl " + arguments + " 2>&1");
}

SoundPlayer::SoundPlayer(const char *output, double frequency)
    : m_thread([this, output, frequency] { play(output, frequency); })
{
}

SoundPlayer::~SoundPlayer()
{
    m_isStopped = true;
    m_thread.join();
}

void SoundPlayer::play(const char *output, double frequency)
{
    constexpr std::size_t kChunk = 480; // 10 ms
    constexpr int kChunksToImpulse = 50;
    const pa_sample_spec spec{.format = PA_SAMPLE_FLOAT32NE, .rate = 48000, .channels = 1};
    const pa_buffer_attr buffer{.maxlength = ~0U,
                                .tlength = 10 * kChunk * sizeof(float),
                                .prebuf = ~0U,
                                .minreq = ~0U,
                                .fragsize = ~0U};
    const std::unique_ptr<pa_simple, void (*)(pa_simple *)> stream(
        pa_simple_new(nullptr, "test", PA_STREAM_PLAYBACK, output, "test", &spec, nullptr, &buffer, nullptr),
        pa_simple_free);
    std::array<float, kChunk> chunk{};
    for (int number = 1; stream && !m_isStopped; ++number) {
        for (std::size_t i = 0; i < kChunk && frequency != kImpulses; ++i) {
            const auto time = static_cast<double>(static_cast<std::size_t>(number) * kChunk + i) / 48000;
            chunk[i] = static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * frequency * time));
        }
        if (frequency == kImpulses) {
            const bool isLoud = number % kChunksToImpulse == 0;
            std::fill_n(chunk.begin(), 24, isLoud ? 0.9F : 0.0F);
            if (isLoud) {
                const auto latency = std::chrono::microseconds(pa_simple_get_latency(stream.get(), nullptr));
                m_impulseTime =
                    std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch() + latency)
                        .count();
            }
        }
        if (pa_simple_write(stream.get(), chunk.data(), sizeof chunk, nullptr) < 0) {
            return;
        }
    }
}

} // namespace zivra::desktop::test
