#pragma once

#include "support/Eventually.h"
#include "support/Shell.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utility>

namespace zivra::desktop::test {

inline constexpr double kOutputTone = 440;
inline constexpr double kMicrophoneTone = 1000;

inline constexpr auto kLoadMicrophone =
    "load-module module-remap-source master=mic_feed.monitor source_name=mic "
    "source_properties=device.description=Desk";

/// A sound server of a test's own, which this process's connections go to once it has started. Its output
/// "out" plays one tone; its microphone "mic", mono at 32000 Hz, hears another.
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
                     kLoadMicrophone +
                     "\nset-default-sink out\nset-default-source mic"
                     "\nload-module module-sine sink=out frequency=440"
                     "\nload-module module-sine sink=mic_feed frequency=1000\n");
    }
    ~PrivateSoundServer() { kill(); }
    PrivateSoundServer(const PrivateSoundServer &) = delete;
    PrivateSoundServer &operator=(const PrivateSoundServer &) = delete;

    void start()
    {
        const auto start = QStringLiteral("env -u PULSE_SERVER XDG_RUNTIME_DIR=%1 HOME=%1 pulseaudio -n "
                                          "-F %1/script --exit-idle-time=20 --disable-shm --use-pid-file=no "
                                          "--daemonize=no >%1/log 2>&1 & echo $!");
        m_process = shell(start.arg(m_directory.path())).trimmed();
        ASSERT_TRUE(eventually([this] { return control("info").contains("Default Source: mic"); }));
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
    QTemporaryDir m_directory;
    QByteArray m_process; ///< its identifier; empty when it does not run
};

} // namespace zivra::desktop::test
