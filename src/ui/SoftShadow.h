#pragma once

#include "ui/VectorItem.h"

#include <QColor>

namespace zivra {

/// The blurred shadow that a rounded rectangle throws. The item is the rectangle grown by `margin` on every
/// side, where the shadow fades out.
class SoftShadow : public VectorItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(qreal margin MEMBER m_margin NOTIFY changed) ///< points
    Q_PROPERTY(
        qreal cornerRadius MEMBER m_cornerRadius NOTIFY changed) ///< points; negative: a circle or capsule
    Q_PROPERTY(qreal blur MEMBER m_blur NOTIFY changed)          ///< points; twice the deviation
    Q_PROPERTY(qreal offset MEMBER m_offset NOTIFY changed)      ///< points downwards

public:
    explicit SoftShadow(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    [[nodiscard]] Painting painting() const override;

private:
    QColor m_color = Qt::black;
    qreal m_margin = 10;
    qreal m_cornerRadius = -1;
    qreal m_blur = 8;
    qreal m_offset = 3;
};

} // namespace zivra
