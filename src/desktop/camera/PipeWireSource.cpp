#include "desktop/camera/PipeWireSource.h"

#include "desktop/camera/PipeWireFormats.h"
#include "desktop/threads/MonotonicTime.h"
#include "platform/PlatformError.h"

#include <spa/buffer/meta.h>
#include <spa/param/param.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace zivra::desktop {

namespace {

/// Closer together than this they are more than 30 a second, an uneven pace allowed for.
constexpr auto kLeastInterval = MediaTime::fromMilliseconds(25);

/// When the picture was taken, where the camera says so on our clock; else now.
MediaTime timeOf(spa_buffer &buffer)
{
    constexpr auto kLongestWay = MediaTime::fromMilliseconds(1000);
    const auto *header = static_cast<const spa_meta_header *>(
        spa_buffer_find_meta_data(&buffer, SPA_META_Header, sizeof(spa_meta_header)));
    const MediaTime arrival = monotonicTime();
    if (header != nullptr) {
        const auto told = MediaTime::fromNanoseconds(header->pts);
        if (told <= arrival && told > arrival - kLongestWay) {
            return told;
        }
    }
    return arrival;
}

std::span<const std::uint8_t> bytesOf(const spa_data &data)
{
    if (data.data == nullptr || data.chunk->offset > data.maxsize ||
        (data.chunk->flags & SPA_CHUNK_FLAG_CORRUPTED) != 0) {
        return {};
    }
    return {static_cast<const std::uint8_t *>(data.data) + data.chunk->offset,
            std::min(data.chunk->size, data.maxsize - data.chunk->offset)};
}

} // namespace

PipeWireSource::PipeWireSource(std::shared_ptr<PipeWireServer> server, std::string nodeName, QSize wished)
    : m_server(std::move(server)),
      m_nodeName(std::move(nodeName)),
      m_wished(wished)
{
}

PipeWireSource::~PipeWireSource()
{
    static_cast<void>(stop());
}

QFuture<void> PipeWireSource::start(SampleHandler onSample, EndHandler onEnd)
{
    const std::unique_lock held(*m_server);
    const auto &nodes = m_server->nodes();
    const auto node = std::ranges::find(nodes, m_nodeName, &PipeWireNode::name);
    if (m_server->core() == nullptr || node == nodes.end()) {
        return QtFuture::makeExceptionalFuture(
            std::make_exception_ptr(PlatformError(QStringLiteral("The camera isn’t there any more."))));
    }
    m_onSample = std::move(onSample);
    m_onEnd = std::move(onEnd);
    m_nodeID = node->id;
    connectStream(*node);
    m_server->addListener(*this);
    return QtFuture::makeReadyFuture();
}

void PipeWireSource::connectStream(const PipeWireNode &node)
{
    static const pw_stream_events events = [] {
        pw_stream_events table{};
        table.version = PW_VERSION_STREAM_EVENTS;
        table.state_changed = [](void *self, pw_stream_state, pw_stream_state state, const char *error) {
            if (state == PW_STREAM_STATE_ERROR) {
                from(self).end(QString::fromUtf8(error));
            }
        };
        table.param_changed = [](void *self, std::uint32_t id, const spa_pod *parameter) {
            if (id == SPA_PARAM_Format) {
                from(self).formatChanged(parameter);
            }
        };
        table.process = [](void *self) { from(self).receive(); };
        return table;
    }();
    pw_properties *properties =
        pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_ROLE,
                          "Camera", PW_KEY_APP_NAME, "Zivra", PW_KEY_NODE_DONT_RECONNECT, "true",
                          PW_KEY_TARGET_OBJECT, node.name.c_str(), nullptr);
    m_stream.reset(pw_stream_new(m_server->core(), "Camera", properties));
    pw_stream_add_listener(m_stream.get(), &m_streamHook, &events, this);
    PipeWireOffer offer(m_wished);
    auto &formats = offer.formats();
    pw_stream_connect(m_stream.get(), PW_DIRECTION_INPUT, PW_ID_ANY,
                      static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                                   PW_STREAM_FLAG_DONT_RECONNECT),
                      formats.data(), static_cast<std::uint32_t>(formats.size()));
}

QFuture<void> PipeWireSource::stop()
{
    const std::unique_lock held(*m_server);
    m_server->removeListener(*this);
    m_stream.reset();
    m_onSample = nullptr;
    m_onEnd = nullptr;
    return QtFuture::makeReadyFuture();
}

void PipeWireSource::nodeRemoved(std::uint32_t id)
{
    if (id == m_nodeID) {
        end(QStringLiteral("The camera was unplugged."));
    }
}

void PipeWireSource::end(const QString &reason)
{
    if (const auto onEnd = std::exchange(m_onEnd, nullptr)) {
        onEnd(std::make_exception_ptr(PlatformError(reason)));
    }
}

void PipeWireSource::formatChanged(const spa_pod *format)
{
    const auto mode = agreedMode(format);
    m_format = {};
    if (!mode) {
        return;
    }
    m_format.pixels = mode->pixels;
    m_format.size = mode->size;
    PipeWireDemands demands;
    auto &parameters = demands.parameters();
    pw_stream_update_params(m_stream.get(), parameters.data(), static_cast<std::uint32_t>(parameters.size()));
}

void PipeWireSource::receive()
{
    // Only the newest is of interest.
    pw_buffer *newest = nullptr;
    while (pw_buffer *buffer = pw_stream_dequeue_buffer(m_stream.get())) {
        if (newest != nullptr) {
            pw_stream_queue_buffer(m_stream.get(), newest);
        }
        newest = buffer;
    }
    if (newest == nullptr) {
        return;
    }
    const MediaTime time = timeOf(*newest->buffer);
    const bool isDue = !m_lastTime.isValid() || time >= m_lastTime + kLeastInterval;
    const auto picture = isDue && m_onEnd ? pictureIn(*newest->buffer) : nullptr;
    pw_stream_queue_buffer(m_stream.get(), newest);
    if (picture) {
        m_lastTime = time;
        m_onSample(
            MediaSample(picture, {time, MediaTime::invalid(), MediaTime::invalid()}, FrameStatus::Complete));
    }
}

std::shared_ptr<const VideoFrame> PipeWireSource::pictureIn(const spa_buffer &buffer)
{
    if (m_format.size.isEmpty() || buffer.n_datas == 0) {
        return nullptr;
    }
    RawPicture raw = m_format;
    raw.bytes = bytesOf(buffer.datas[0]);
    raw.stride = std::max(0, buffer.datas[0].chunk->stride);
    if (buffer.n_datas > 1) {
        raw.secondPlane = bytesOf(buffer.datas[1]);
    }
    return m_converter.convert(raw);
}

} // namespace zivra::desktop
