#pragma once

#include "platform/FileSystem.h"
#include "platform/PlatformError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <map>

namespace zivra::test {

/// Real files in a folder of its own, with dates and failures as the test says.
class FakeFileSystem final : public FileSystem {
public:
    std::map<QString, FileDates> datesByName; ///< other files have none
    bool moveFails = false;
    bool trashFails = false;
    bool replaceFails = false;

    [[nodiscard]] QUrl moviesDirectory() const override { return QUrl::fromLocalFile(m_directory.path()); }
    [[nodiscard]] FileDates dates(const QUrl &file) const override
    {
        const auto scripted = datesByName.find(file.fileName());
        return scripted != datesByName.end() ? scripted->second : FileDates{};
    }
    void moveItem(const QUrl &from, const QUrl &to) override
    {
        require(!moveFails && QFile::rename(from.toLocalFile(), to.toLocalFile()));
    }
    void trashItem(const QUrl &file) override { require(!trashFails && QFile::remove(file.toLocalFile())); }
    void replaceItem(const QUrl &item, const QUrl &newItem) override
    {
        require(!replaceFails && QFile::remove(item.toLocalFile()) &&
                QFile::rename(newItem.toLocalFile(), item.toLocalFile()));
    }

    /// A file beneath the movies directory, with folders as needed.
    QUrl addFile(const QString &relativePath, const QByteArray &content = {}) const
    {
        const QFileInfo info(m_directory.filePath(relativePath));
        QDir().mkpath(info.path());
        QFile file(info.filePath());
        require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return QUrl::fromLocalFile(info.filePath());
    }
    [[nodiscard]] static QByteArray read(const QUrl &url)
    {
        QFile file(url.toLocalFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "unreadable";
    }
    /// All names there, hidden ones too.
    [[nodiscard]] QStringList names(const QString &relativeFolder) const
    {
        return QDir(m_directory.filePath(relativeFolder)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

private:
    static void require(bool done)
    {
        if (!done) {
            throw PlatformError(QStringLiteral("The file could not be touched."));
        }
    }

    QTemporaryDir m_directory;
};

} // namespace zivra::test
