#include "Scene.h"

#include "DesktopPage.h"
#include "Landscape.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

namespace zivra::bench {

namespace {

constexpr int kCells = 18;
constexpr int kCellSide = 20;
// Within what changes in every scene.
constexpr QPoint kStripPlace{780, 212};

void drawStrip(QPainter &painter, int frame)
{
    int parity = 0;
    for (int cell = 0; cell < kCells; ++cell) {
        int bit = 1;
        if (cell == kCells - 1) {
            bit = parity;
        } else if (cell > 0) {
            bit = (frame >> (kCells - 2 - cell)) & 1;
            parity ^= bit;
        }
        painter.fillRect(kStripPlace.x() + cell * kCellSide, kStripPlace.y(), kCellSide, kCellSide,
                         bit != 0 ? Qt::white : Qt::black);
    }
}

/// Swings between 0 and `range`, no faster than `speed` pixels a frame.
int swing(int frame, double range, double speed)
{
    return static_cast<int>(std::lround(range / 2 * (1 - std::cos(2 * speed / range * frame))));
}

/// Runs from 0 to `range` and back at an even speed.
int bounce(int frame, int range, int speed)
{
    const int place = frame * speed % (2 * range);
    return place < range ? place : 2 * range - place;
}

/// A view that pans over a landscape, under cards that cross it in ways of their own.
class Pan {
public:
    Pan(QSize view, QSize margin, double speed, int cards)
        : m_view(view),
          m_margin(margin),
          m_speed(speed),
          m_landscape(landscape(view + margin, 7))
    {
        for (int card = 0; card < cards; ++card) {
            m_cards.push_back(landscape(view / (4 + card), 11 + static_cast<unsigned>(card)));
        }
    }

    void operator()(QPainter &painter, int frame) const
    {
        const QPoint origin(swing(frame, m_margin.width(), m_speed),
                            swing(frame, m_margin.height(), m_speed * 0.6));
        painter.drawImage(QPoint(), m_landscape, QRect(origin, m_view));
        int index = 0;
        for (const QImage &card : m_cards) {
            const QSize free = m_view - card.size();
            painter.drawImage(QPoint(bounce(frame + 97 * index, free.width(), 2 + index),
                                     bounce(frame + 31 * index, free.height(), 1 + index)),
                              card);
            ++index;
        }
    }

private:
    QSize m_view;
    QSize m_margin;
    double m_speed; ///< greatest, in pixels a frame
    QImage m_landscape;
    std::vector<QImage> m_cards;
};

} // namespace

Scene::Scene(QImage background, QRect changing, Motion motion)
    : m_background(std::move(background)),
      m_changing(changing),
      m_motion(std::move(motion))
{
    QPainter painter(&m_background);
    drawStrip(painter, 0);
}

void Scene::draw(QImage &screen, int frame) const
{
    if (m_changing.isEmpty()) {
        return;
    }
    QPainter painter(&screen);
    painter.setClipRect(m_changing);
    painter.translate(m_changing.topLeft());
    m_motion(painter, frame);
    painter.resetTransform();
    drawStrip(painter, frame);
}

Scene Scene::still()
{
    return {desktopPage(), {}, {}};
}

Scene Scene::small()
{
    const QRect window(760, 200, 400, 300);
    return {desktopPage(), window, Pan(window.size(), {500, 400}, 5, 2)};
}

Scene Scene::scroll()
{
    constexpr int kSpeed = 3; // pixels a frame
    const QRect column(480, 60, 960, 960);
    const QImage text = textColumn({column.width(), 5000});
    const auto motion = [text, column](QPainter &painter, int frame) {
        const int top = frame * kSpeed % text.height();
        painter.drawImage(0, -top, text);
        if (top + column.height() > text.height()) {
            painter.drawImage(0, text.height() - top, text);
        }
    };
    return {desktopPage(), column, motion};
}

Scene Scene::full()
{
    const QRect screen({}, kScreenSize);
    return {QImage(kScreenSize, QImage::Format_RGB32), screen, Pan(screen.size(), {900, 600}, 8, 3)};
}

std::optional<Scene> Scene::named(const QString &name)
{
    const std::array<std::pair<const char *, Scene (*)()>, 4> scenes{
        {{"still", still}, {"small", small}, {"scroll", scroll}, {"full", full}}};
    for (const auto &[known, make] : scenes) {
        if (name == QLatin1String(known)) {
            return make();
        }
    }
    return std::nullopt;
}

} // namespace zivra::bench
