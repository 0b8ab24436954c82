#pragma once

#include <QSize>

#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>

#include <array>
#include <cstring>
#include <vector>

namespace zivra::desktop::test {

/// A camera that this program shares on PipeWire while the object lives: 30 pictures a second, each with the
/// same bytes.
class SharedCamera {
public:
    SharedCamera(const char *name, std::uint32_t mediaSubtype, std::uint32_t format, QSize size,
                 std::vector<std::uint8_t> picture)
        : m_picture(std::move(picture)),
          m_stride(format == SPA_VIDEO_FORMAT_NV12 ? size.width()
                                                   : size.width() * (format == SPA_VIDEO_FORMAT_YUY2 ? 2 : 4))
    {
        pw_init(nullptr, nullptr);
        m_loop = pw_thread_loop_new("shared-camera", nullptr);
        pw_loop *loop = pw_thread_loop_get_loop(m_loop);
        static const pw_stream_events events = [] {
            pw_stream_events table{};
            table.version = PW_VERSION_STREAM_EVENTS;
            table.process = [](void *self) { static_cast<SharedCamera *>(self)->fill(); };
            return table;
        }();
        auto *properties =
            pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_NODE_NAME, name,
                              PW_KEY_NODE_DESCRIPTION, "Shared Camera", PW_KEY_MEDIA_ROLE, "Camera", nullptr);
        m_stream = pw_stream_new_simple(loop, name, properties, &events, this);
        std::array<std::uint8_t, 1024> memory{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, memory.data(), memory.size());
        spa_pod_frame frame{};
        const spa_rectangle rectangle{std::uint32_t(size.width()), std::uint32_t(size.height())};
        const spa_fraction rate{30, 1};
        spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
        spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                            SPA_FORMAT_mediaSubtype, SPA_POD_Id(mediaSubtype), SPA_FORMAT_VIDEO_size,
                            SPA_POD_Rectangle(&rectangle), SPA_FORMAT_VIDEO_framerate,
                            SPA_POD_Fraction(&rate), 0);
        if (mediaSubtype == SPA_MEDIA_SUBTYPE_raw) {
            spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(format), 0);
        }
        std::array<const spa_pod *, 2> parameters{
            static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame))};
        spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers);
        spa_pod_builder_add(&builder, SPA_PARAM_BUFFERS_size, SPA_POD_Int(int(m_picture.size())), 0);
        parameters[1] = static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame));
        pw_stream_connect(m_stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                          pw_stream_flags(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS),
                          parameters.data(), parameters.size());
        m_timer = pw_loop_add_timer(
            loop,
            [](void *self, std::uint64_t) {
                pw_stream_trigger_process(static_cast<SharedCamera *>(self)->m_stream);
            },
            this);
        timespec interval{0, 1'000'000'000 / 30};
        pw_loop_update_timer(loop, m_timer, &interval, &interval, false);
        pw_thread_loop_start(m_loop);
    }
    ~SharedCamera()
    {
        pw_thread_loop_stop(m_loop);
        pw_loop_destroy_source(pw_thread_loop_get_loop(m_loop), m_timer);
        pw_stream_destroy(m_stream);
        pw_thread_loop_destroy(m_loop);
    }
    SharedCamera(const SharedCamera &) = delete;
    SharedCamera &operator=(const SharedCamera &) = delete;

private:
    void fill()
    {
        if (pw_buffer *buffer = pw_stream_dequeue_buffer(m_stream)) {
            spa_data &data = buffer->buffer->datas[0];
            std::memcpy(data.data, m_picture.data(), m_picture.size());
            *data.chunk = {0, std::uint32_t(m_picture.size()), m_stride, 0};
            pw_stream_queue_buffer(m_stream, buffer);
        }
    }

    std::vector<std::uint8_t> m_picture;
    std::int32_t m_stride;
    pw_thread_loop *m_loop;
    pw_stream *m_stream;
    spa_source *m_timer;
};

} // namespace zivra::desktop::test
