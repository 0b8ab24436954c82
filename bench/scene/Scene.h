#pragma once

#include <QImage>
#include <QPainter>
#include <QRect>
#include <QString>

#include <functional>
#include <optional>

namespace zivra::bench {

inline constexpr QSize kScreenSize{1920, 1080};

/// What a benchmark records: a picture of the whole screen for each frame number, always the same for the
/// same number. Each one carries its number as a strip of 18 square cells (white, the number's 16 low bits
/// from the highest, their parity; white is one), which survives encoding.
class Scene {
public:
    /// "still", "small", "scroll" or "full".
    static std::optional<Scene> named(const QString &name);

    /// Draws the part of a frame that differs from the frames around it, `changing()`, into a picture of the
    /// screen. Cheap: the content is there already and only moved.
    void draw(QImage &screen, int frame) const;
    /// Empty for a scene that stands still.
    [[nodiscard]] QRect changing() const { return m_changing; }
    /// The rest of the picture.
    [[nodiscard]] const QImage &background() const { return m_background; }

private:
    using Motion = std::function<void(QPainter &painter, int frame)>;

    Scene(QImage background, QRect changing, Motion motion);
    static Scene still();
    static Scene small();
    static Scene scroll();
    static Scene full();

    QImage m_background;
    QRect m_changing;
    Motion m_motion; ///< in coordinates of `m_changing`
};

} // namespace zivra::bench
