#pragma once

#include "platform/MediaClock.h"
#include "ui/NamedColors.h"

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QTimer>
#include <QUuid>

#include <array>
#include <functional>
#include <optional>
#include <vector>

namespace zivra {

/// The strokes that the user draws on the screen. Each stays solid for three seconds after the pen is lifted,
/// fades out over one more, and is removed. Main thread only.
class DrawingModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<QColor> palette READ paletteColors CONSTANT)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(bool isDrawing READ isDrawing WRITE setIsDrawing NOTIFY isDrawingChanged)

public:
    struct Stroke {
        QUuid id;
        std::vector<QPointF> points; ///< of the canvas; never empty
        QColor color;
        std::optional<MediaTime> endedAt; ///< absent while the pen is down

        /// From 1, solid, to 0.
        [[nodiscard]] double opacity(MediaTime now) const;
    };

    static constexpr std::array palette = {kRed, kOrange, kYellow, kGreen, kBlue, kPurple, kWhite, kBlack};

    /// The clock outlives the model.
    explicit DrawingModel(const MediaClock &clock);

    /// In the order in which they are drawn.
    [[nodiscard]] const std::vector<Stroke> &strokes() const { return m_strokes; }
    /// Of the next stroke.
    [[nodiscard]] const QColor &color() const { return m_color; }
    void setColor(const QColor &color);
    /// Whether the pen is in the hand: the sheet takes the mouse.
    [[nodiscard]] bool isDrawing() const { return m_isDrawing; }
    void setIsDrawing(bool isDrawing);
    [[nodiscard]] MediaTime now() const { return m_clock.now(); }
    [[nodiscard]] bool isPruning() const { return m_pruneTimer.isActive(); }

    void begin(QPointF at);
    void extend(QPointF to);
    void end();
    Q_INVOKABLE void clear();
    /// Removes what has faded.
    void prune();

    /// Told the new value each time that `isDrawing` is set.
    std::function<void(bool)> onActiveChange;

Q_SIGNALS:
    void strokesChanged();
    void colorChanged();
    void isDrawingChanged();

private:
    [[nodiscard]] static QList<QColor> paletteColors() { return {palette.begin(), palette.end()}; }

    const MediaClock &m_clock;
    std::vector<Stroke> m_strokes;
    QColor m_color = palette.front();
    bool m_isDrawing = false;
    QTimer m_pruneTimer; ///< runs only while there are strokes
};

} // namespace zivra
