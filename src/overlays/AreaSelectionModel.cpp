#include "overlays/AreaSelectionModel.h"

#include <QLineF>

#include <utility>

namespace zivra {

namespace {

constexpr double kDragDistance = 2; ///< points
constexpr double kSmallestSide = 40;

} // namespace

QRectF AreaSelectionModel::selection() const
{
    return hasSelection() ? QRectF(*m_start, *m_current).normalized() : QRectF();
}

QString AreaSelectionModel::size() const
{
    const QRectF area = selection();
    return QStringLiteral("%1 × %2").arg(static_cast<int>(area.width())).arg(static_cast<int>(area.height()));
}

bool AreaSelectionModel::canRecord() const
{
    const QRectF area = selection();
    return !m_isDragging && area.width() >= kSmallestSide && area.height() >= kSmallestSide;
}

void AreaSelectionModel::drag(QPointF to)
{
    if (!m_pressed || (!m_isDragging && QLineF(*m_pressed, to).length() < kDragDistance)) {
        return;
    }
    if (!std::exchange(m_isDragging, true)) {
        m_start = m_pressed;
    }
    m_current = to;
    Q_EMIT changed();
}

void AreaSelectionModel::release(QPointF at)
{
    m_pressed.reset();
    if (std::exchange(m_isDragging, false)) {
        m_current = at;
        Q_EMIT changed();
    }
}

void AreaSelectionModel::record()
{
    if (canRecord()) {
        finish(area());
    }
}

void AreaSelectionModel::finish(const std::optional<QRectF> &area)
{
    if (const auto done = std::exchange(onDone, nullptr)) {
        done(area);
    }
}

} // namespace zivra
