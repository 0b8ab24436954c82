#include "desktop/media/ChangedBlocks.h"

#include <algorithm>

namespace zivra::desktop {

namespace {

constexpr int kBlockSize = 16;

} // namespace

ChangedBlocks::ChangedBlocks(int width, int height)
    : m_columns((width + kBlockSize - 1) / kBlockSize),
      m_rows((height + kBlockSize - 1) / kBlockSize),
      m_marks(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows))
{
}

void ChangedBlocks::note(const VideoFrame &frame)
{
    const bool isNext = m_lastNumber > 0 && frame.number == m_lastNumber + 1;
    m_lastNumber = frame.number;
    if (!isNext || !frame.changed) {
        std::fill(m_marks.begin(), m_marks.end(), std::uint8_t{0});
        return;
    }
    std::fill(m_marks.begin(), m_marks.end(), kUnchanged);
    for (const QRect &rectangle : *frame.changed) {
        noteRectangle(rectangle & QRect(0, 0, frame.width, frame.height));
    }
}

void ChangedBlocks::noteRectangle(const QRect &rectangle)
{
    if (rectangle.isEmpty()) {
        return;
    }
    const auto first = rectangle.left() / kBlockSize;
    const auto count = rectangle.right() / kBlockSize - first + 1;
    for (int row = rectangle.top() / kBlockSize; row <= rectangle.bottom() / kBlockSize; ++row) {
        std::fill_n(m_marks.begin() + std::ptrdiff_t{row} * m_columns + first, count, std::uint8_t{0});
    }
}

double ChangedBlocks::share() const
{
    const auto unchanged = std::count(m_marks.begin(), m_marks.end(), kUnchanged);
    return 1 - static_cast<double>(unchanged) / static_cast<double>(m_marks.size());
}

} // namespace zivra::desktop
