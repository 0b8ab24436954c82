#include "ui/ViewLoader.h"

#include "ui/NamedColors.h"
#include "ui/RoundedShape.h"
#include "ui/SoftShadow.h"
#include "ui/Symbol.h"

#include <QQmlComponent>

namespace zivra {

namespace {

void registerTypes()
{
    static const bool once = [] {
        constexpr auto kModule = "Zivra.Shapes";
        qmlRegisterType<RoundedShape>(kModule, 1, 0, "RoundedShape");
        qmlRegisterType<SoftShadow>(kModule, 1, 0, "SoftShadow");
        qmlRegisterType<Symbol>(kModule, 1, 0, "Symbol");
        qmlRegisterSingletonType(kModule, 1, 0, "Colors", [](QQmlEngine *, QJSEngine *scripts) {
            QJSValue colors = scripts->newObject();
            colors.setProperty(QStringLiteral("brand"), scripts->toScriptValue(brandColor()));
            colors.setProperty(QStringLiteral("red"), scripts->toScriptValue(kRed));
            colors.setProperty(QStringLiteral("orange"), scripts->toScriptValue(kOrange));
            return colors;
        });
        return true;
    }();
    static_cast<void>(once);
}

} // namespace

ViewLoader::ViewLoader()
{
    registerTypes();
    m_engine.addImportPath(QStringLiteral("qrc:/zivra/qml"));
}

std::unique_ptr<QQuickItem> ViewLoader::load(const QString &file, const QVariantMap &properties)
{
    QQmlComponent component(&m_engine, QUrl(QStringLiteral("qrc:/zivra/qml/Zivra/") + file));
    std::unique_ptr<QObject> object(component.createWithInitialProperties(properties));
    auto *item = qobject_cast<QQuickItem *>(object.get());
    if (item == nullptr) {
        qFatal("%s", qUtf8Printable(component.errorString()));
    }
    static_cast<void>(object.release());
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    return std::unique_ptr<QQuickItem>(item);
}

} // namespace zivra
