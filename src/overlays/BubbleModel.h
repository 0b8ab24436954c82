#pragma once

#include "settings/RecordingChoices.h"

#include <QObject>
#include <QRectF>
#include <QSizeF>

#include <functional>
#include <optional>

namespace zivra {

/// How the bubble looks and where it goes. Main thread only.
class BubbleModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(int size READ sizeIndex NOTIFY changed)
    Q_PROPERTY(bool mirrored READ mirrored NOTIFY changed)
    Q_PROPERTY(bool cameraOnly READ cameraOnly NOTIFY changed)

public:
    /// The transparent border around the picture, in points: room for its shadow.
    static constexpr double kMargin = 10;

    [[nodiscard]] BubbleSize size() const { return m_size; }
    /// Of `kAllBubbleSizes`.
    [[nodiscard]] int sizeIndex() const { return static_cast<int>(m_size); }
    [[nodiscard]] bool mirrored() const { return m_mirrored; }
    [[nodiscard]] bool cameraOnly() const { return m_cameraOnly; }
    void set(BubbleSize size, bool mirrored, bool cameraOnly);
    void setSize(BubbleSize size) { set(size, m_mirrored, m_cameraOnly); }

    [[nodiscard]] static QSizeF frameSize(bool cameraOnly, BubbleSize size);
    /// The panel's frame when it is shown. `current`: its frame if it shows a bubble already, which then
    /// stays where it is. `last`: its frame when a bubble was last hidden.
    [[nodiscard]] QRectF frameOn(const QRectF &visibleFrame, const std::optional<QRectF> &current,
                                 const std::optional<QRectF> &last) const;

    Q_INVOKABLE void chooseSize(int index);
    Q_INVOKABLE void close();

    std::function<void(BubbleSize)> onSize;
    std::function<void()> onClose;

Q_SIGNALS:
    void changed();

private:
    BubbleSize m_size = BubbleSize::Medium;
    bool m_mirrored = true;
    bool m_cameraOnly = false;
};

} // namespace zivra
