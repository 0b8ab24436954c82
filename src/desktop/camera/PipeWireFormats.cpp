#include "desktop/camera/PipeWireFormats.h"

#include <spa/buffer/buffer.h>
#include <spa/buffer/meta.h>
#include <spa/param/buffers.h>
#include <spa/param/param.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

namespace zivra::desktop {

namespace {

constexpr spa_fraction kUsualRate{30, 1};
constexpr spa_fraction kLowestRate{0, 1};
constexpr spa_fraction kHighestRate{60, 1};
constexpr spa_rectangle kSmallest{2, 2};
constexpr spa_rectangle kLargest{8192, 8192};

spa_rectangle rectangleOf(QSize size)
{
    return {static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height())};
}

const spa_pod *addFormat(spa_pod_builder &builder, bool isJpeg, QSize wished, bool isStrict)
{
    const spa_rectangle size = rectangleOf(wished);
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(isJpeg ? SPA_MEDIA_SUBTYPE_mjpg : SPA_MEDIA_SUBTYPE_raw), 0);
    if (!isJpeg) {
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format,
                            SPA_POD_CHOICE_ENUM_Id(4, SPA_VIDEO_FORMAT_YUY2, SPA_VIDEO_FORMAT_YUY2,
                                                   SPA_VIDEO_FORMAT_NV12, SPA_VIDEO_FORMAT_BGRx),
                            0);
    }
    if (isStrict) {
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), 0);
    } else {
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size,
                            SPA_POD_CHOICE_RANGE_Rectangle(&size, &kSmallest, &kLargest), 0);
    }
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_framerate,
                        SPA_POD_CHOICE_RANGE_Fraction(&kUsualRate, &kLowestRate, &kHighestRate), 0);
    return static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame));
}

std::optional<CameraPixels> pixelsOf(spa_video_format format)
{
    switch (format) {
    case SPA_VIDEO_FORMAT_YUY2:
        return CameraPixels::Yuyv;
    case SPA_VIDEO_FORMAT_NV12:
        return CameraPixels::Nv12;
    case SPA_VIDEO_FORMAT_BGRx:
        return CameraPixels::Bgrx;
    default:
        return std::nullopt;
    }
}

QSize sizeOf(const spa_rectangle &size)
{
    return {static_cast<int>(size.width), static_cast<int>(size.height)};
}

} // namespace

PipeWireOffer::PipeWireOffer(QSize wished)
{
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, m_memory.data(), static_cast<std::uint32_t>(m_memory.size()));
    for (const bool isStrict : {true, false}) {
        for (const bool isJpeg : {false, true}) {
            m_formats.push_back(addFormat(builder, isJpeg, wished, isStrict));
        }
    }
}

std::optional<CameraMode> agreedMode(const spa_pod *format)
{
    std::uint32_t type = 0;
    std::uint32_t subtype = 0;
    if (format == nullptr || spa_format_parse(format, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video) {
        return std::nullopt;
    }
    if (subtype == SPA_MEDIA_SUBTYPE_mjpg) {
        spa_video_info_mjpg jpeg{};
        return spa_format_video_mjpg_parse(format, &jpeg) >= 0
                   ? std::optional(CameraMode{.pixels = CameraPixels::Mjpeg, .size = sizeOf(jpeg.size)})
                   : std::nullopt;
    }
    spa_video_info_raw raw{};
    if (subtype != SPA_MEDIA_SUBTYPE_raw || spa_format_video_raw_parse(format, &raw) < 0) {
        return std::nullopt;
    }
    const auto pixels = pixelsOf(raw.format);
    return pixels ? std::optional(CameraMode{.pixels = *pixels, .size = sizeOf(raw.size)}) : std::nullopt;
}

PipeWireDemands::PipeWireDemands()
{
    constexpr int kReadable = (1 << SPA_DATA_MemPtr) | (1 << SPA_DATA_MemFd);
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, m_memory.data(), static_cast<std::uint32_t>(m_memory.size()));
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers);
    spa_pod_builder_add(&builder, SPA_PARAM_BUFFERS_buffers, SPA_POD_CHOICE_RANGE_Int(4, 2, 16),
                        SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(kReadable), 0);
    m_parameters.push_back(static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame)));
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta);
    spa_pod_builder_add(&builder, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header), SPA_PARAM_META_size,
                        SPA_POD_Int(static_cast<int>(sizeof(spa_meta_header))), 0);
    m_parameters.push_back(static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame)));
}

} // namespace zivra::desktop
