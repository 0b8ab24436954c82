#pragma once

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <functional>
#include <optional>

namespace zivra {

/// The rectangle that is being dragged out on a screen, in points from its top left. Main thread only.
class AreaSelectionModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool hasSelection READ hasSelection NOTIFY changed)
    Q_PROPERTY(QRectF area READ area NOTIFY changed)
    Q_PROPERTY(QString size READ size NOTIFY changed)
    Q_PROPERTY(bool canRecord READ canRecord NOTIFY changed)

public:
    [[nodiscard]] bool hasSelection() const { return m_start && m_current; }
    /// Whichever way it was dragged, its size is not negative.
    [[nodiscard]] QRectF selection() const;
    /// What would be recorded: whole, and contains all of the selection.
    [[nodiscard]] QRectF area() const { return selection().toAlignedRect(); }
    /// For reading: width, height.
    [[nodiscard]] QString size() const;
    /// It is large enough, and the mouse has let go of it.
    [[nodiscard]] bool canRecord() const;

    Q_INVOKABLE void press(QPointF at) { m_pressed = at; }
    /// A drag begins two points away from the press; before, an earlier selection stays.
    Q_INVOKABLE void drag(QPointF to);
    Q_INVOKABLE void release(QPointF at);
    Q_INVOKABLE void cancel() { finish(std::nullopt); }
    /// Does nothing while the selection cannot be recorded.
    Q_INVOKABLE void record();

    /// Taken and cleared before it is called, so that the first end wins.
    std::function<void(std::optional<QRectF>)> onDone;

Q_SIGNALS:
    void changed();

private:
    void finish(const std::optional<QRectF> &area);

    std::optional<QPointF> m_pressed;
    std::optional<QPointF> m_start;
    std::optional<QPointF> m_current;
    bool m_isDragging = false;
};

} // namespace zivra
