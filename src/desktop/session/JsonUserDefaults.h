#pragma once

#include "platform/UserDefaults.h"

#include <QJsonObject>

namespace zivra::desktop {

/// The user defaults in a file: one JSON object with a member for each key.
///
/// The file is read once, at construction, and written as a whole at each change: a crash leaves the old
/// content or the new one. Only the user may read it. Members that nobody asks for are kept. A file that
/// can't be understood is set aside under another name, and every key reads as missing then. A failing
/// write is silent: the value holds until the program ends.
class JsonUserDefaults final : public UserDefaults {
public:
    explicit JsonUserDefaults(QString path = standardPath());

    /// `$XDG_CONFIG_HOME/io.quillbeck.zivra/defaults.json`
    [[nodiscard]] static QString standardPath();

    [[nodiscard]] QJsonValue value(const QString &key) const override;
    /// An undefined value removes the key.
    void setValue(const QString &key, const QJsonValue &value) override;
    void removeValue(const QString &key) override;

private:
    void read();
    void write() const;

    QString m_path;
    QJsonObject m_values;
    bool m_mayWrite = true; ///< false to spare a damaged file that could not be set aside
};

} // namespace zivra::desktop
