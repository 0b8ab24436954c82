#pragma once

#include <QQuickItem>

#include <functional>

class QPainter;

namespace zivra {

/// An item that is painted for the very pixels on which it lands, so that it is sharp and whole at fractional
/// scale factors too. The painting is kept until it changes. Main thread only, with the software renderer.
class VectorItem : public QQuickItem {
public:
    /// Paints in points, from the item's top left. It may outlive the item and so owns what it needs.
    using Painting = std::function<void(QPainter &painter)>;

protected:
    explicit VectorItem(QQuickItem *parent);

    [[nodiscard]] virtual Painting painting() const = 0;

    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) final;
};

} // namespace zivra
