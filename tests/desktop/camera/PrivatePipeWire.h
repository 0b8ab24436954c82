#pragma once

#include "support/Eventually.h"
#include "support/Shell.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zivra::desktop::test {

/// A PipeWire server and its session manager, which needs a session bus, of a test's own. This process's
/// connections go there.
class PrivatePipeWire {
public:
    PrivatePipeWire()
    {
        qputenv("XDG_RUNTIME_DIR", m_directory.path().toLocal8Bit());
        m_server = start("pipewire");
        EXPECT_TRUE(eventually([this] { return QFile::exists(m_directory.filePath("pipewire-0")); }));
        m_manager = start("wireplumber");
    }
    ~PrivatePipeWire()
    {
        kill(m_manager);
        kill(m_server);
    }
    PrivatePipeWire(const PrivatePipeWire &) = delete;
    PrivatePipeWire &operator=(const PrivatePipeWire &) = delete;

private:
    QByteArray start(const QString &program) const
    {
        const auto command = QStringLiteral("env HOME=%1 XDG_STATE_HOME=%1 %2 >%1/%2.log 2>&1 & echo $!");
        return shell(command.arg(m_directory.path(), program)).trimmed();
    }
    static void kill(const QByteArray &process) { shell("kill -9 " + process); }

    QTemporaryDir m_directory;
    QByteArray m_server; ///< process identifiers
    QByteArray m_manager;
};

} // namespace zivra::desktop::test
