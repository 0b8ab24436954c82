#include "Landscape.h"

#include "Words.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace zivra::bench {

namespace {

/// A field of random heights, smooth over `cell` pixels.
class Lattice {
public:
    Lattice(QSize size, int cell, std::mt19937 &random) : m_cell(cell), m_columns(size.width() / cell + 2)
    {
        const int rows = size.height() / cell + 2;
        m_heights.reserve(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(rows));
        for (int index = 0; index < m_columns * rows; ++index) {
            m_heights.push_back(static_cast<float>(random() & 0xffffU) / 65535.0F - 0.5F);
        }
    }
    /// Adds the heights of a row of pixels, scaled.
    void addRow(int y, float scale, std::vector<float> &sums) const
    {
        const float down = eased(y % m_cell);
        const auto row = static_cast<std::size_t>(y / m_cell) * static_cast<std::size_t>(m_columns);
        const float *const upper = m_heights.data() + row;
        const float *const lower = upper + m_columns;
        for (int x = 0; x < static_cast<int>(sums.size()); ++x) {
            const int column = x / m_cell;
            const float across = eased(x % m_cell);
            const float top = std::lerp(upper[column], upper[column + 1], across);
            const float bottom = std::lerp(lower[column], lower[column + 1], across);
            sums[static_cast<std::size_t>(x)] += scale * std::lerp(top, bottom, down);
        }
    }

private:
    [[nodiscard]] float eased(int place) const
    {
        const float part = static_cast<float>(place) / static_cast<float>(m_cell);
        return part * part * (3 - 2 * part);
    }

    int m_cell;
    int m_columns;
    std::vector<float> m_heights;
};

/// Sums of lattices of ever finer cells with ever lower heights: as in a photograph, the finer the fainter.
class Noise {
public:
    Noise(QSize size, int finest, std::mt19937 &random)
    {
        for (int cell = 256; cell >= finest; cell /= 2) {
            m_lattices.emplace_back(size, cell, random);
        }
    }
    void row(int y, std::vector<float> &sums) const
    {
        std::ranges::fill(sums, 0.0F);
        float scale = 1;
        for (const Lattice &lattice : m_lattices) {
            lattice.addRow(y, scale, sums);
            scale *= 0.55F;
        }
    }

private:
    std::vector<Lattice> m_lattices;
};

int shade(float value)
{
    return std::clamp(static_cast<int>(std::lround(value)), 0, 255);
}

QImage clouds(QSize size, std::mt19937 &random)
{
    const Noise brightness(size, 1, random);
    const Noise tint(size, 16, random);
    QImage image(size, QImage::Format_RGB32);
    std::vector<float> bright(static_cast<std::size_t>(size.width()));
    std::vector<float> warm(bright.size());
    for (int y = 0; y < size.height(); ++y) {
        brightness.row(y, bright);
        tint.row(y, warm);
        auto *const line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (std::size_t x = 0; x < bright.size(); ++x) {
            const float base = 120 + 150 * bright[x];
            line[x] =
                qRgb(shade(base + 90 * warm[x]), shade(base + 20 * warm[x]), shade(base - 80 * warm[x]));
        }
    }
    return image;
}

int upTo(int limit, std::mt19937 &random)
{
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

void drawShapes(QPainter &painter, QSize size, std::mt19937 &random)
{
    const int count = size.width() * size.height() / 40000;
    painter.setPen(Qt::NoPen);
    for (int index = 0; index < count; ++index) {
        const QRect place(upTo(size.width(), random), upTo(size.height(), random), 20 + upTo(120, random),
                          20 + upTo(90, random));
        painter.setBrush(QColor::fromHsv(upTo(360, random), 60 + upTo(120, random), 60 + upTo(190, random)));
        if (index % 3 == 0) {
            painter.drawEllipse(place);
        } else if (index % 3 == 1) {
            painter.drawRoundedRect(place, 6, 6);
        } else {
            painter.drawPolygon(QPolygon(
                {place.bottomLeft(), place.topLeft() + QPoint(place.width() / 3, 0), place.bottomRight()}));
        }
    }
}

void drawCaptions(QPainter &painter, QSize size, std::mt19937 &random)
{
    Words words(random());
    const int count = size.width() * size.height() / 50000;
    for (int index = 0; index < count; ++index) {
        painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 9 + upTo(14, random)));
        painter.setPen(index % 2 == 0 ? Qt::white : Qt::black);
        painter.drawText(upTo(size.width(), random), upTo(size.height(), random), words.sentence());
    }
}

} // namespace

QImage landscape(QSize size, unsigned seed)
{
    std::mt19937 random(seed);
    QImage image = clouds(size, random);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawShapes(painter, size, random);
    drawCaptions(painter, size, random);
    return image;
}

} // namespace zivra::bench
