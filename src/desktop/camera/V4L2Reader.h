#pragma once

#include "desktop/camera/CameraThread.h"
#include "desktop/camera/PictureConverter.h"
#include "desktop/camera/V4L2Device.h"

#include <memory>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// Reads the pictures of a V4L2 camera out of memory that it shares with the kernel.
class V4L2Reader final : public CameraReader {
public:
    V4L2Reader(std::shared_ptr<V4L2System> system, QString deviceID, QSize wished);
    ~V4L2Reader() override;
    V4L2Reader(const V4L2Reader &) = delete;
    V4L2Reader &operator=(const V4L2Reader &) = delete;

    void open() override;
    [[nodiscard]] std::optional<MediaSample> next(int wakeUp) override;

private:
    struct Buffer {
        std::uint8_t *memory;
        std::size_t length;
    };

    void setFormat();
    void shareBuffers();
    [[nodiscard]] bool queueBuffer(std::uint32_t index) const;
    [[nodiscard]] std::optional<MediaSample> sampleFrom(std::uint32_t index, std::size_t bytes,
                                                        MediaTime time);

    std::shared_ptr<V4L2System> m_system;
    QString m_deviceID;
    QSize m_wished;
    std::optional<V4L2Device> m_device;
    RawPicture m_format; ///< without bytes
    std::vector<Buffer> m_buffers;
    PictureConverter m_converter;
    MediaTime m_lastTime; ///< of the last picture delivered
};

} // namespace zivra::desktop
