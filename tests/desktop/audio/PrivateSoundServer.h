#pragma once

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>
#include <pulse/simple.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <numbers>
#include <thread>
#include <utility>

namespace zivra::desktop::test {

/// Within ten seconds.
inline bool comesTrue(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
    return true;
}

inline constexpr auto kLoadMicrophone =
    "load-module module-remap-source master=mic_feed.monitor source_name=mic "
    "source_properties=device.description=Desk";

/// A sound server of a test's own, which this process's connections go to once it has started. Its output
/// is "out"; its microphone "mic" hears what is played to "mic_feed", mono at 32000 Hz.
class PrivateSoundServer {
public:
    PrivateSoundServer()
    {
        const auto socket = m_directory.filePath("socket").toLocal8Bit();
        qputenv("PULSE_SERVER", "unix:" + socket);
        QFile script(m_directory.filePath("script"));
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("load-module module-native-protocol-unix auth-anonymous=1 socket=" + socket +
                     "\nload-module module-null-sink sink_name=out norewinds=1"
                     "\nload-module module-null-sink sink_name=mic_feed norewinds=1 rate=32000 channels=1\n" +
                     kLoadMicrophone + "\nset-default-sink out\nset-default-source mic\n");
    }
    ~PrivateSoundServer() { kill(); }
    PrivateSoundServer(const PrivateSoundServer &) = delete;
    PrivateSoundServer &operator=(const PrivateSoundServer &) = delete;

    void start()
    {
        const auto start = QStringLiteral("env -u PULSE_SERVER XDG_RUNTIME_DIR=%1 HOME=%1 pulseaudio -n "
                                          "-F %1/script --exit-idle-time=20 --disable-shm --use-pid-file=no "
                                          "--daemonize=no >%1/log 2>&1 & echo $!");
        m_process = shell(start.arg(m_directory.path()));
        ASSERT_TRUE(comesTrue([this] { return control("info").contains("Default Source: mic"); }));
    }
    void kill()
    {
        if (!m_process.isEmpty()) {
            shell("kill -9 " + std::exchange(m_process, {}));
        }
    }
    /// Asks the server by its command-line tool; what that printed.
    QString control(const QString &arguments) const { return shell("pactl " + arguments + " 2>&1"); }

private:
    /// Not by way of `QProcess`: after it the thread sanitizer overlooks the locks of the calling thread.
    static QString shell(const QString &command)
    {
        const std::unique_ptr<FILE, int (*)(FILE *)> output(popen(qPrintable(command), "r"), pclose);
        QFile text;
        EXPECT_TRUE(output && text.open(output.get(), QIODevice::ReadOnly));
        return QString::fromUtf8(text.readAll()).trimmed();
    }

    QTemporaryDir m_directory;
    QString m_process; ///< its identifier; empty when it does not run
};

/// Plays to an output for as long as it lives: a tone, or short impulses twice a second.
class SoundPlayer {
public:
    static constexpr double kImpulses = 0;

    SoundPlayer(const char *output, double frequency) : m_thread([=, this] { play(output, frequency); }) {}
    ~SoundPlayer()
    {
        m_isStopped = true;
        m_thread.join();
    }
    SoundPlayer(const SoundPlayer &) = delete;
    SoundPlayer &operator=(const SoundPlayer &) = delete;

    /// When the latest impulse is to be heard, in nanoseconds; 0 before the first.
    [[nodiscard]] std::int64_t impulseTime() const { return m_impulseTime; }

private:
    void play(const char *output, double frequency)
    {
        std::array<float, 480> chunk{}; // 10 ms
        const pa_sample_spec spec{.format = PA_SAMPLE_FLOAT32NE, .rate = 48000, .channels = 1};
        const pa_buffer_attr buffer{
            .maxlength = ~0U, .tlength = 10 * sizeof chunk, .prebuf = ~0U, .minreq = ~0U, .fragsize = ~0U};
        const std::unique_ptr<pa_simple, void (*)(pa_simple *)> stream(
            pa_simple_new(nullptr, "test", PA_STREAM_PLAYBACK, output, "test", &spec, nullptr, &buffer,
                          nullptr),
            pa_simple_free);
        bool isPlaying = stream != nullptr;
        for (std::size_t number = 1; isPlaying && !m_isStopped; ++number) {
            const bool isImpulse = frequency == kImpulses && number % 50 == 0;
            for (std::size_t i = 0; i < chunk.size(); ++i) {
                const auto time = static_cast<double>(number * chunk.size() + i) / 48000;
                const auto tone = 0.5 * std::sin(2 * std::numbers::pi * frequency * time);
                chunk[i] = isImpulse && i < 24 ? 0.9F : static_cast<float>(tone);
            }
            if (isImpulse) {
                const auto heard = std::chrono::steady_clock::now() +
                                   std::chrono::microseconds(pa_simple_get_latency(stream.get(), nullptr));
                m_impulseTime = std::chrono::nanoseconds(heard.time_since_epoch()).count();
            }
            isPlaying = pa_simple_write(stream.get(), chunk.data(), sizeof chunk, nullptr) == 0;
        }
    }

    std::atomic<bool> m_isStopped = false;
    std::atomic<std::int64_t> m_impulseTime = 0;
    std::thread m_thread;
};

} // namespace zivra::desktop::test
