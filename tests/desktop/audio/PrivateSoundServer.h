#pragma once

#include <QString>
#include <QTemporaryDir>

#include <atomic>
#include <cstdint>
#include <thread>

namespace zivra::desktop::test {

/// A sound server of a test's own, which this process's connections go to. Its output is "out"; its
/// microphone "mic" hears what is played to "mic_feed", mono at 32000 Hz.
class PrivateSoundServer {
public:
    PrivateSoundServer();
    ~PrivateSoundServer();
    PrivateSoundServer(const PrivateSoundServer &) = delete;
    PrivateSoundServer &operator=(const PrivateSoundServer &) = delete;

    void start();
    void kill();
    /// Asks the server by its command-line tool; what that printed, trimmed.
    QString control(const QString &arguments) const;

private:
    QTemporaryDir m_directory;
    QString m_process; ///< its identifier; empty when it does not run
};

inline constexpr auto kLoadMicrophone =
    "load-module module-remap-source master=mic_feed.monitor source_name=mic "
    "source_properties=device.description=Desk";

/// Plays to an output for as long as it lives: a tone, or short impulses twice a second.
class SoundPlayer {
public:
    static constexpr double kImpulses = 0;

    SoundPlayer(const char *output, double frequency);
    ~SoundPlayer();
    SoundPlayer(const SoundPlayer &) = delete;
    SoundPlayer &operator=(const SoundPlayer &) = delete;

    /// When the latest impulse is to be heard, in nanoseconds; 0 before the first.
    [[nodiscard]] std::int64_t impulseTime() const { return m_impulseTime; }

private:
    void play(const char *output, double frequency);

    std::atomic<bool> m_isStopped = false;
    std::atomic<std::int64_t> m_impulseTime = 0;
    std::thread m_thread;
};

} // namespace zivra::desktop::test
