#pragma once

#include "platform/CaptureSources.h"

#include <QPromise>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace zivra::desktop {

/// As many pictures of a camera may be in use: one is shown, one held, the others wait for an encoder that is
/// late.
inline constexpr int kCameraPictures = 12;

/// A camera as it is read by one thread, which also destroys it.
class CameraReader {
public:
    virtual ~CameraReader() = default;

    /// Throws `PlatformError`.
    virtual void open() = 0;
    /// Waits for the next picture, but no longer than until `wakeUp`, a file descriptor, can be read. Absent
    /// when there is none after all. Throws `PlatformError` when the camera is gone.
    [[nodiscard]] virtual std::optional<MediaSample> next(int wakeUp) = 0;
};

/// A camera source with a thread of its own for what `CameraReader` does.
class CameraThread final : public CaptureSource {
public:
    explicit CameraThread(std::unique_ptr<CameraReader> reader);
    ~CameraThread() override;
    CameraThread(const CameraThread &) = delete;
    CameraThread &operator=(const CameraThread &) = delete;

    [[nodiscard]] QFuture<void> start(SampleHandler onSample, EndHandler onEnd) override;
    [[nodiscard]] QFuture<void> stop() override;

private:
    void run(const SampleHandler &onSample, const EndHandler &onEnd);

    std::unique_ptr<CameraReader> m_reader; ///< the thread's, once that runs
    int m_wakeUp;                           ///< an event descriptor, owned
    std::atomic<bool> m_stopRequested = false;
    QPromise<void> m_started;
    QPromise<void> m_stopped;
    std::thread m_thread;
};

} // namespace zivra::desktop
