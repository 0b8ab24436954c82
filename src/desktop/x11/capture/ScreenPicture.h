#pragma once

#include "desktop/frames/FramePool.h"
#include "desktop/x11/XcbConnection.h"
#include "desktop/x11/capture/ClickOverlay.h"
#include "desktop/x11/capture/CursorOverlay.h"
#include "desktop/x11/capture/FrameConverter.h"
#include "desktop/x11/capture/PictureContent.h"
#include "desktop/x11/capture/ServerEvents.h"
#include "desktop/x11/capture/SharedImage.h"
#include "platform/CaptureStream.h"

#include <QByteArray>
#include <QRegion>

#include <cstdint>
#include <memory>
#include <optional>

namespace zivra::desktop {

/// The picture that one take shows, on a connection of its own, and the frames made of it. For one thread.
class ScreenPicture {
public:
    /// Throws `PlatformError`, as do the others when the picture can no longer be had.
    ScreenPicture(const QByteArray &displayName, const ContentFilter &filter,
                  const CaptureConfiguration &configuration);

    /// Readable when the server has sent something.
    [[nodiscard]] int fileDescriptor() const { return m_connection.fileDescriptor(); }
    /// Takes in what the server has sent; never waits for more.
    void noteEvents();
    /// Something happened that may be seen.
    [[nodiscard]] bool mayHaveChanged() const;

    struct Frame {
        std::shared_ptr<const VideoFrame> picture;
        MediaTime time; ///< when it was read
    };
    /// The picture as it is now. Absent when no buffer is free, then it still counts as changed, and when it
    /// turns out that nothing changed, unless the frame is wanted all the same.
    [[nodiscard]] std::optional<Frame> takeFrame(bool evenIfUnchanged);
    /// Frames that there was no buffer for.
    [[nodiscard]] std::uint64_t droppedFrames() const { return m_droppedFrames; }

private:
    void checkDisplay();
    void notePress();
    [[nodiscard]] std::unique_ptr<FrameBuffer> takeBuffer();
    [[nodiscard]] std::optional<Frame> lastFrameAgain();
    [[nodiscard]] QRegion takeChanges();
    [[nodiscard]] bool read(QRegion &changed);
    void convert(const QRegion &changed, FrameBuffer &buffer);

    XcbConnection m_connection;
    std::uint32_t m_displayID;
    QRect m_area; ///< pixels of the root window, at the start
    ServerEvents m_events;
    SharedImage m_image;
    FrameConverter m_converter;
    FramePool m_pool;
    std::unique_ptr<PictureContent> m_content;
    std::optional<CursorOverlay> m_cursor;
    std::optional<ClickOverlay> m_clicks;
    QRegion m_unread;                         ///< changed, and not in a frame yet
    std::shared_ptr<const VideoFrame> m_last; ///< null before the first, and when its buffer was needed
    std::uint64_t m_frames = 0;
    bool m_mustCheckDisplay = false;
    std::uint64_t m_droppedFrames = 0;
};

} // namespace zivra::desktop
