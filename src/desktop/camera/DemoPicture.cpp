#include "desktop/camera/DemoPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

namespace zivra::desktop {

namespace {

/// BT.601, limited range.
struct Colour {
    std::uint8_t y;
    std::uint8_t u;
    std::uint8_t v;
};

constexpr Colour kWhite{235, 128, 128};
constexpr Colour kBlack{16, 128, 128};
constexpr Colour kBall{210, 60, 150};
/// Of a soft blue, teal, green, sand, orange, rose and violet.
constexpr std::array<Colour, 7> kBars{{{110, 160, 105},
                                       {135, 135, 95},
                                       {150, 105, 105},
                                       {185, 105, 135},
                                       {155, 85, 160},
                                       {140, 120, 165},
                                       {105, 150, 140}}};
constexpr int kCells = 18;

class Painter {
public:
    explicit Painter(FrameBuffer &picture) : m_picture(picture) {}

    [[nodiscard]] int width() const { return m_picture.size().width(); }
    [[nodiscard]] int height() const { return m_picture.size().height(); }

    /// Clipped to the picture and to even pixels.
    void fill(const QRect &rectangle, Colour colour)
    {
        const QRect inside = rectangle & QRect(0, 0, width(), height());
        fillPlane(0, inside, colour.y);
        const QRect half(inside.x() / 2, inside.y() / 2, (inside.x() + inside.width()) / 2 - inside.x() / 2,
                         (inside.y() + inside.height()) / 2 - inside.y() / 2);
        fillPlane(1, half, colour.u);
        fillPlane(2, half, colour.v);
    }

private:
    void fillPlane(int plane, const QRect &rectangle, std::uint8_t value)
    {
        for (int row = 0; rectangle.width() > 0 && row < rectangle.height(); ++row) {
            std::memset(m_picture.at(plane) + std::ptrdiff_t{rectangle.y() + row} * m_picture.stride(plane) +
                            rectangle.x(),
                        value, static_cast<std::size_t>(rectangle.width()));
        }
    }

    FrameBuffer &m_picture;
};

/// The `index`th of `count` equal columns of the picture.
QRect column(const Painter &painter, int index, int count, int top, int height)
{
    const int left = painter.width() * index / count;
    return {left, top, painter.width() * (index + 1) / count - left, height};
}

void drawCode(Painter &painter, unsigned number)
{
    const int height = painter.height() / 10;
    bool isOdd = false;
    for (int cell = 0; cell < kCells; ++cell) {
        bool isSet = cell == 0 || isOdd;
        if (cell > 0 && cell < kCells - 1) {
            isSet = (number >> (kCells - 2 - cell) & 1U) != 0;
            isOdd ^= isSet;
        }
        painter.fill(column(painter, cell, kCells, 0, height), isSet ? kWhite : kBlack);
    }
}

void drawDigit(Painter &painter, unsigned digit, QPoint corner, int width)
{
    // Seven segments, a bit each: top, upper right, lower right, bottom, lower left, upper left, middle.
    constexpr std::array<unsigned, 10> kSegments{0x3f, 0x06, 0x5b, 0x4f, 0x66, 0x6d, 0x7d, 0x07, 0x7f, 0x6f};
    constexpr std::array<QPoint, 7> kFrom{{{0, 0}, {1, 0}, {1, 1}, {0, 2}, {0, 1}, {0, 0}, {0, 1}}};
    const int stroke = width / 5;
    for (std::size_t segment = 0; segment < kFrom.size(); ++segment) {
        const bool isFlat = segment % 3 == 0;
        if ((kSegments.at(digit) >> segment & 1U) != 0) {
            painter.fill({corner + kFrom.at(segment) * (width - stroke),
                          isFlat ? QSize(width, stroke) : QSize(stroke, width)},
                         kWhite);
        }
    }
}

void drawNumber(Painter &painter, unsigned number)
{
    constexpr int kDigits = 5;
    const int pitch = painter.height() / 12;
    QPoint corner(painter.width() / 2 + pitch * kDigits / 2, painter.height() * 7 / 10);
    for (int digit = 0; digit < kDigits; ++digit, number /= 10) {
        corner.rx() -= pitch;
        drawDigit(painter, number % 10, corner, pitch * 2 / 3);
    }
}

void drawBall(Painter &painter, std::int64_t number)
{
    constexpr int kPeriod = 90; // pictures
    const double turn = 2 * std::numbers::pi * static_cast<double>(number % kPeriod) / kPeriod;
    const int radius = painter.height() / 10;
    const QPoint centre(painter.width() / 2 + static_cast<int>(std::sin(turn) * painter.width() * 0.35),
                        painter.height() * 9 / 20);
    for (int y = -radius; y < radius; y += 2) {
        const int half = static_cast<int>(std::sqrt(radius * radius - (y + 1) * (y + 1)));
        painter.fill({centre.x() - half, centre.y() + y, 2 * half, 2}, kBall);
    }
}

} // namespace

void drawDemoPicture(FrameBuffer &picture, std::int64_t number)
{
    constexpr std::int64_t kNumbers = 65536;
    const auto shown = static_cast<unsigned>(number % kNumbers);
    Painter painter(picture);
    const int strip = painter.height() / 10;
    for (std::size_t bar = 0; bar < kBars.size(); ++bar) {
        painter.fill(
            column(painter, static_cast<int>(bar), static_cast<int>(kBars.size()), 0, painter.height()),
            kBars.at(bar));
    }
    drawCode(painter, shown);
    painter.fill({0, strip, painter.width(), strip}, number % kDemoRate < kDemoRate / 10 ? kWhite : kBlack);
    drawBall(painter, number);
    drawNumber(painter, shown);
}

} // namespace zivra::desktop
