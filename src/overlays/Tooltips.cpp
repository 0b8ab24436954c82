#include "overlays/Tooltips.h"

#include "overlays/PanelLevels.h"

#include <QQmlContext>
#include <QQuickWindow>
#include <QScreen>

#include <algorithm>
#include <chrono>

namespace zivra {

namespace {

constexpr double kDistance = 8;      ///< points between the item and its text
constexpr double kSideDistance = 15; ///< clear of the bar that the item is in
constexpr double kScreenMargin = 4;

QRectF besides(const QRectF &item, int edge, QSizeF size)
{
    if (edge == Qt::RightEdge) {
        return {QPointF(item.right() + kSideDistance, item.center().y() - size.height() / 2), size};
    }
    return {QPointF(item.center().x() - size.width() / 2, item.bottom() + kDistance), size};
}

QRectF keptIn(QRectF frame, const QRectF &item, const QRectF &screen)
{
    if (frame.right() > screen.right() - kScreenMargin && frame.left() >= item.right()) {
        frame.moveRight(item.left() - kSideDistance);
    }
    if (frame.bottom() > screen.bottom() - kScreenMargin && frame.top() >= item.bottom()) {
        frame.moveBottom(item.top() - kDistance);
    }
    frame.moveRight(std::min(frame.right(), screen.right() - kScreenMargin));
    frame.moveLeft(std::max(frame.left(), screen.left() + kScreenMargin));
    return frame;
}

} // namespace

Tooltips::Tooltips(const PanelMaker &maker) : m_maker(maker)
{
    maker.views.engine().rootContext()->setContextProperty(QStringLiteral("tooltips"), this);
    m_delay.setSingleShot(true);
    m_delay.setInterval(std::chrono::milliseconds(600));
    connect(&m_delay, &QTimer::timeout, this, &Tooltips::show);
    m_afterglow.setSingleShot(true);
    m_afterglow.setInterval(std::chrono::milliseconds(300));
}

void Tooltips::offer(QQuickItem *item, const QString &text, int edge)
{
    m_item = item;
    m_edge = edge;
    setText(text);
    if (text.isEmpty()) {
        return;
    }
    if (m_afterglow.isActive()) {
        show();
    } else {
        m_delay.start();
    }
}

void Tooltips::change(QQuickItem *item, const QString &text)
{
    if (item == m_item) {
        setText(text);
        place();
    }
}

void Tooltips::withdraw(QQuickItem *item)
{
    if (item != m_item) {
        return;
    }
    m_delay.stop();
    m_item.clear();
    if (m_panel && m_panel->isVisible()) {
        m_panel->orderOut();
        m_afterglow.start();
    }
}

void Tooltips::setText(const QString &text)
{
    m_text = text;
    Q_EMIT textChanged();
}

void Tooltips::show()
{
    if (!m_item || m_item->window() == nullptr || !m_item->window()->isVisible()) {
        return;
    }
    if (!m_panel) {
        m_panel.emplace(
            m_maker,
            PanelStyle{.title = QStringLiteral("Tooltip"), .level = kToolTipLevel, .ignoresMouse = true},
            QStringLiteral("Overlays/TooltipView.qml"),
            QVariantMap{{QStringLiteral("model"), QVariant::fromValue<QObject *>(this)}});
    }
    place();
    m_panel->orderFront();
    // A view that goes away tells nobody that the mouse has left it.
    connect(
        m_item->window(), &QWindow::visibleChanged, this,
        [this, item = m_item](bool visible) {
            if (!visible && item) {
                withdraw(item);
            }
        },
        Qt::SingleShotConnection);
}

void Tooltips::place()
{
    if (!m_panel || !m_item || m_item->window() == nullptr) {
        return;
    }
    const QRectF item(m_item->mapToGlobal(QPointF(0, 0)), m_item->size());
    const QRectF frame = besides(item, m_edge, m_panel->fittingSize());
    m_panel->setFrame(keptIn(frame, item, m_item->window()->screen()->geometry()));
}

} // namespace zivra
