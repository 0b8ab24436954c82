#pragma once

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

namespace zivra::desktop {

class ApplicationAdaptor;

/// Sees to one resident program in a session, and hands what a second one was started for to the first.
/// Main thread only.
///
/// The first one owns the name `io.quillbeck.zivra` on the session bus and answers there as an
/// `org.freedesktop.Application` (freedesktop.org, desktop entries, "D-Bus Activation"), so that the bus
/// itself may start it too. Handlers run from the event loop, after the caller has its reply; calls that
/// come in before the loop runs wait for it.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    enum class Role {
        Primary,   ///< this program is the resident one
        Secondary, ///< another one is: hand over to it, then end
        NoBus,     ///< no session bus: run, without knowing of others
    };

    explicit SingleInstance(QDBusConnection bus = QDBusConnection::sessionBus());
    ~SingleInstance() override;
    Q_DISABLE_COPY_MOVE(SingleInstance)

    /// The program was started again.
    void setActivateHandler(std::function<void()> handler) { m_activate = std::move(handler); }
    /// The program was started again to open these; never an empty list.
    void setOpenHandler(std::function<void(const QList<QUrl> &)> handler) { m_open = std::move(handler); }

    /// Takes the name, or finds it taken.
    [[nodiscard]] Role claim();

    /// For the secondary: has the primary open the URLs, or activates it without any. Waits up to 2 s; false
    /// when the primary did not reply.
    bool handOver(const QList<QUrl> &urls);

private:
    friend class ApplicationAdaptor;

    void activate();
    void open(const QList<QUrl> &urls);

    QDBusConnection m_bus;
    std::unique_ptr<ApplicationAdaptor> m_adaptor; ///< answers wherever this object is on the bus
    std::function<void()> m_activate;
    std::function<void(const QList<QUrl> &)> m_open;
    bool m_isPrimary = false;
};

} // namespace zivra::desktop
