#pragma once

#include "platform/MediaSample.h"

#include <cstdint>
#include <vector>

namespace zivra::desktop {

/// Which macroblocks (16x16 pixels) of a picture differ from the picture noted before.
class ChangedBlocks {
public:
    /// In pixels.
    ChangedBlocks(int width, int height);

    /// Everything counts as changed unless the frame says what is, and the one it compares itself with is the
    /// one that was noted last.
    void note(const VideoFrame &frame);

    /// 0 to 1.
    [[nodiscard]] double share() const;
    /// A byte per block, row by row: `unchangedMark` or 0.
    [[nodiscard]] std::vector<std::uint8_t> &marks() { return m_marks; }

    /// What libx264 calls X264_MBINFO_CONSTANT.
    static constexpr std::uint8_t kUnchanged = 1;

private:
    void noteRectangle(const QRect &rectangle);

    int m_columns;
    int m_rows;
    std::vector<std::uint8_t> m_marks;
    std::uint64_t m_lastNumber = 0;
};

} // namespace zivra::desktop
