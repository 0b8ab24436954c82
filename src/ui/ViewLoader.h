#pragma once

#include <QQmlEngine>
#include <QQuickItem>
#include <QString>
#include <QVariantMap>

#include <memory>

namespace zivra {

/// Makes views out of their QML files, all in one engine. Main thread only.
class ViewLoader {
public:
    ViewLoader();

    /// `file` is relative to qrc:/zivra/qml/Zivra. The properties are set before anything is bound to them.
    /// The item outlives neither the loader nor the objects among its properties. A broken file ends the
    /// program in words: it is part of it.
    [[nodiscard]] std::unique_ptr<QQuickItem> load(const QString &file, const QVariantMap &properties);

    [[nodiscard]] QQmlEngine &engine() { return m_engine; }

private:
    QQmlEngine m_engine;
};

} // namespace zivra
