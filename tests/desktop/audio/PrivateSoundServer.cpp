#include "desktop/audio/PrivateSoundServer.h"

#include <QFile>
#include <QThread>

#include <gtest/gtest.h>
#include <pulse/simple.h>

#include <array>
#include <chrono>
#include <cmath>
#include <memory>
#include <numbers>

namespace zivra::desktop::test {

PrivateSoundServer::PrivateSoundServer()
{
    qputenv("PULSE_SERVER", "unix:" + m_directory.filePath("socket").toLocal8Bit());
    QFile script(m_directory.filePath("script"));
    EXPECT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("load-module module-native-protocol-unix auth-anonymous=1 socket=" +
                 m_directory.filePath("socket").toLocal8Bit() +
                 "\nload-module module-null-sink sink_name=out norewinds=1"
                 "\nload-module module-null-sink sink_name=mic_feed norewinds=1 rate=32000 channels=1\n" +
                 kLoadMicrophone.join(' ').toLocal8Bit() +
                 "\nset-default-sink out\nset-default-source mic\n");
}

PrivateSoundServer::~PrivateSoundServer()
{
    kill();
}

void PrivateSoundServer::start()
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_RUNTIME_DIR", m_directory.path());
    environment.insert("HOME", m_directory.path());
    environment.remove("PULSE_SERVER");
    m_process.setProcessEnvironment(environment);
    m_process.setStandardErrorFile(m_directory.filePath("log"));
    m_process.start("pulseaudio", {"-n", "-F", m_directory.filePath("script"), "--exit-idle-time=-1",
                                   "--disable-shm", "--use-pid-file=no", "--daemonize=no"});
    ASSERT_TRUE(m_process.waitForStarted());
    for (int attempt = 0; attempt < 200 && !control({"info"}).contains("Default Source: mic"); ++attempt) {
        QThread::msleep(20);
    }
}

void PrivateSoundServer::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

QString PrivateSoundServer::control(const QStringList &arguments) const
{
    QProcess tool;
    tool.start("pactl", arguments);
    tool.waitForFinished();
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
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
