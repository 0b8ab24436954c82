#pragma once

#include "ui/VectorItem.h"

#include <QColor>

namespace zivra {

/// A filled rectangle with round corners and a line inside its edge.
class RoundedShape : public VectorItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    /// Points; negative: as round as it goes, which makes circles and capsules.
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY changed)
    /// The curve sets in gently, as on a pebble, rather than as a quarter of a circle.
    Q_PROPERTY(bool continuous MEMBER m_continuous NOTIFY changed)
    Q_PROPERTY(QColor lineColor MEMBER m_lineColor NOTIFY changed)
    /// Points; 0: none.
    Q_PROPERTY(qreal lineWidth MEMBER m_lineWidth NOTIFY changed)

public:
    explicit RoundedShape(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] Painting painting() const override;

private:
    QColor m_color = Qt::transparent;
    qreal m_radius = -1;
    bool m_continuous = false;
    QColor m_lineColor = Qt::transparent;
    qreal m_lineWidth = 0;
};

} // namespace zivra
