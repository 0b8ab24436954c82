#pragma once

#include "platform/CaptureSources.h"

#include <QByteArray>

#include <memory>
#include <thread>

namespace zivra::desktop {

/// The picture of an X server's display or windows, on a connection and a thread of its own.
///
/// The thread sleeps until something changes, the next repetition is due or it is told to stop. A picture is
/// read as soon as the frame interval allows after a change; a second without one brings the picture again.
/// Frames use memory that is limited to the configured depth: while all is in use, changes wait.
class X11PictureSource final : public CaptureSource {
public:
    /// A display such as ":0"; empty stands for $DISPLAY.
    X11PictureSource(QByteArray displayName, ContentFilter filter, CaptureConfiguration configuration);
    ~X11PictureSource() override;
    X11PictureSource(const X11PictureSource &) = delete;
    X11PictureSource &operator=(const X11PictureSource &) = delete;

    [[nodiscard]] QFuture<void> start(SampleHandler onSample, EndHandler onEnd) override;
    [[nodiscard]] QFuture<void> stop() override;

private:
    class Loop;

    QByteArray m_displayName;
    ContentFilter m_filter;
    CaptureConfiguration m_configuration;
    std::shared_ptr<Loop> m_loop; ///< null before the start; shared with the thread
    std::thread m_thread;
};

} // namespace zivra::desktop
