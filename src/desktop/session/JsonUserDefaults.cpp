#include "desktop/session/JsonUserDefaults.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

#include <sys/stat.h>

#include <optional>

namespace zivra::desktop {

namespace {

std::optional<QJsonObject> readObject(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const auto document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject()) {
        return std::nullopt;
    }
    return document.object();
}

/// Keeps the damaged file for whoever wants to look into it; QFile::rename() never overwrites.
bool setAside(const QString &path)
{
    const auto day = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd"));
    const auto name = QStringLiteral("%1.damaged-%2").arg(path, day);
    auto candidate = name;
    for (int number = 2; QFileInfo::exists(candidate); ++number) {
        candidate = QStringLiteral("%1-%2").arg(name).arg(number);
    }
    return QFile::rename(path, candidate);
}

/// Creates the folder for this user alone; one that is there already keeps its mode.
void makeFolder(const QString &folder)
{
    QDir().mkpath(QFileInfo(folder).path());
    ::mkdir(QFile::encodeName(folder).constData(), S_IRWXU);
}

} // namespace

JsonUserDefaults::JsonUserDefaults(QString path) : m_path(std::move(path))
{
    read();
}

QString JsonUserDefaults::standardPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/io.quillbeck.zivra/defaults.json");
}

QJsonValue JsonUserDefaults::value(const QString &key) const
{
    return m_values.value(key);
}

void JsonUserDefaults::setValue(const QString &key, const QJsonValue &value)
{
    if (m_values.value(key) == value) {
        return;
    }
    m_values.insert(key, value);
    write();
}

void JsonUserDefaults::removeValue(const QString &key)
{
    setValue(key, QJsonValue(QJsonValue::Undefined));
}

void JsonUserDefaults::read()
{
    if (!QFileInfo::exists(m_path)) {
        return;
    }
    if (auto values = readObject(m_path)) {
        m_values = *std::move(values);
    } else {
        m_mayWrite = setAside(m_path);
    }
}

void JsonUserDefaults::write() const
{
    if (!m_mayWrite) {
        return;
    }
    makeFolder(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly)) {
        return;
    }
    // Before the first byte: the temporary file would be readable by others until then.
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    file.write(QJsonDocument(m_values).toJson());
    file.commit();
}

} // namespace zivra::desktop
