#include "overlays/DrawingModel.h"

#include <algorithm>
#include <chrono>

namespace zivra {

namespace {

constexpr double kSolidSeconds = 3;
constexpr double kFadeSeconds = 1;

} // namespace

double DrawingModel::Stroke::opacity(MediaTime now) const
{
    if (!endedAt) {
        return 1;
    }
    const double age = (now - *endedAt).seconds();
    return std::clamp(1 - (age - kSolidSeconds) / kFadeSeconds, 0.0, 1.0);
}

DrawingModel::DrawingModel(const MediaClock &clock) : m_clock(clock)
{
    m_pruneTimer.setInterval(std::chrono::milliseconds(500));
    connect(&m_pruneTimer, &QTimer::timeout, this, &DrawingModel::prune);
}

void DrawingModel::setColor(const QColor &color)
{
    m_color = color;
    Q_EMIT colorChanged();
}

void DrawingModel::setIsDrawing(bool isDrawing)
{
    m_isDrawing = isDrawing;
    if (onActiveChange) {
        onActiveChange(isDrawing);
    }
    Q_EMIT isDrawingChanged();
}

void DrawingModel::begin(QPointF at)
{
    m_strokes.push_back({QUuid::createUuid(), {at}, m_color, std::nullopt});
    if (!m_pruneTimer.isActive()) {
        m_pruneTimer.start();
    }
    Q_EMIT strokesChanged();
}

void DrawingModel::extend(QPointF to)
{
    if (m_strokes.empty()) {
        return;
    }
    m_strokes.back().points.push_back(to);
    Q_EMIT strokesChanged();
}

void DrawingModel::end()
{
    if (m_strokes.empty()) {
        return;
    }
    m_strokes.back().endedAt = m_clock.now();
    Q_EMIT strokesChanged();
}

void DrawingModel::clear()
{
    m_strokes.clear();
    Q_EMIT strokesChanged();
}

void DrawingModel::prune()
{
    const MediaTime now = m_clock.now();
    const auto removed = std::erase_if(m_strokes, [now](const Stroke &stroke) {
        return stroke.endedAt && (now - *stroke.endedAt).seconds() > kSolidSeconds + kFadeSeconds;
    });
    if (m_strokes.empty()) {
        m_pruneTimer.stop();
    }
    if (removed > 0) {
        Q_EMIT strokesChanged();
    }
}

} // namespace zivra
