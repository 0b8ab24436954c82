#pragma once

#include "desktop/camera/PictureConverter.h"
#include "desktop/camera/PipeWireServer.h"
#include "platform/CaptureSources.h"

#include <memory>
#include <string>

struct spa_pod;

namespace zivra::desktop {

/// What a camera on PipeWire sends. Its samples come on the loop's thread.
class PipeWireSource final : public CaptureSource, private PipeWireListener {
public:
    /// The server may be used by others at the same time.
    PipeWireSource(std::shared_ptr<PipeWireServer> server, std::string nodeName, QSize wished);
    ~PipeWireSource() override;
    PipeWireSource(const PipeWireSource &) = delete;
    PipeWireSource &operator=(const PipeWireSource &) = delete;

    [[nodiscard]] QFuture<void> start(SampleHandler onSample, EndHandler onEnd) override;
    [[nodiscard]] QFuture<void> stop() override;

private:
    void connectStream(const PipeWireNode &node);
    void nodeRemoved(std::uint32_t id) override;
    void end(const QString &reason);
    void formatChanged(const spa_pod *format);
    void receive();
    [[nodiscard]] std::shared_ptr<const VideoFrame> pictureIn(const spa_buffer &buffer);
    static PipeWireSource &from(void *self) { return *static_cast<PipeWireSource *>(self); }

    std::shared_ptr<PipeWireServer> m_server;
    // All that follows is used with the server's lock held.
    std::string m_nodeName;
    QSize m_wished;
    std::uint32_t m_nodeID = 0;
    SampleHandler m_onSample;
    EndHandler m_onEnd; ///< empty once it has been called
    PipeWireStreamHandle m_stream;
    spa_hook m_streamHook{};
    RawPicture m_format; ///< without bytes; no size before the format is settled
    PictureConverter m_converter;
    MediaTime m_lastTime; ///< of the last picture delivered
};

} // namespace zivra::desktop
