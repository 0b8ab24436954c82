#pragma once

#include <QByteArray>

#include <sys/types.h>

namespace zivra::desktop {

/// An open file descriptor; not open when the system refused, which errno tells of then.
class OpenFile {
public:
    OpenFile(const QByteArray &path, int flags, mode_t mode = 0);
    ~OpenFile();
    Q_DISABLE_COPY_MOVE(OpenFile)

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// False with errno on failure, which is EEXIST when `to` exists: it is never overwritten.
[[nodiscard]] bool renameWithoutOverwriting(const QByteArray &from, const QByteArray &to);

} // namespace zivra::desktop
