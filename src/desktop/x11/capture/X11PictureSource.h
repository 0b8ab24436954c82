#pragma once

#include "platform/CaptureSources.h"

#include <QPromise>

#include <memory>
#include <thread>

namespace zivra::desktop {

/// The picture of an X server's display or windows, on a connection and a thread of its own.
///
/// The thread sleeps until something changes, the next repetition is due or it is told to stop. A picture is
/// read as soon as the frame interval allows after a change; a second without one brings the last picture
/// again. Frames share memory that is limited to the configured depth: while all is in use, changes wait.
class X11PictureSource final : public CaptureSource {
public:
    X11PictureSource(ContentFilter filter, CaptureConfiguration configuration);
    ~X11PictureSource() override;
    X11PictureSource(const X11PictureSource &) = delete;
    X11PictureSource &operator=(const X11PictureSource &) = delete;

    [[nodiscard]] QFuture<void> start(SampleHandler onSample, EndHandler onEnd) override;
    [[nodiscard]] QFuture<void> stop() override;

private:
    class Loop;

    ContentFilter m_filter;
    CaptureConfiguration m_configuration;
    std::shared_ptr<Loop> m_loop; ///< runs on `m_thread`
    std::jthread m_thread;
};

} // namespace zivra::desktop
