#pragma once

#include "platform/PicturePreview.h"

#include <QImage>
#include <QQuickItem>

#include <memory>
#include <vector>

namespace zivra {

/// What the camera sees: fills the item, what does not fit is cut off, and so are the corners.
class CameraPicture : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(bool mirrored MEMBER m_mirrored NOTIFY changed)
    /// Points; negative: a circle.
    Q_PROPERTY(qreal cornerRadius MEMBER m_cornerRadius NOTIFY changed)

public:
    explicit CameraPicture(QQuickItem *parent = nullptr);
    ~CameraPicture() override;
    CameraPicture(const CameraPicture &) = delete;
    CameraPicture &operator=(const CameraPicture &) = delete;

    /// Follows this one, which outlives the item or the next call. Null: none any more.
    void setPreview(PicturePreview *preview);

Q_SIGNALS:
    void changed();

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;

private:
    void makeMask(QSize size, double scale);

    PicturePreview *m_preview = nullptr;
    bool m_mirrored = true;
    qreal m_cornerRadius = -1;
    QImage m_mask; ///< one byte a pixel, for the size and corners shown last
    qreal m_maskedRadius = 0;
};

} // namespace zivra
