#include "desktop/media/PictureEncoder.h"

#include "desktop/media/LibavPictureEncoder.h"
#ifdef ZIVRA_HAS_X264
#include "desktop/media/X264PictureEncoder.h"
#endif

namespace zivra::desktop {

PictureEncoder::PictureEncoder(const VideoSettings &settings) : m_settings(settings) {}

bool PictureEncoder::accepts(const MediaSample &sample) const
{
    const auto picture = sample.videoFrame();
    return picture && picture->width == m_settings.width && picture->height == m_settings.height;
}

void PictureEncoder::encode(const MediaSample &sample, MediaTime time)
{
    const auto ticks = ticksFrom(time, kTimeBase);
    if (ticks <= m_lastTime) {
        return; // before the movie's start, or no later than the picture before
    }
    m_lastTime = ticks;
    encodePicture(sample.videoFrame(), ticks);
}

void PictureEncoder::fillUntil(MediaTime) {}

std::unique_ptr<PictureEncoder> makePictureEncoder(const VideoSettings &settings)
{
#ifdef ZIVRA_HAS_X264
    if (settings.codec == VideoCodec::H264) {
        return std::make_unique<X264PictureEncoder>(settings);
    }
#endif
    return std::make_unique<LibavPictureEncoder>(settings);
}

} // namespace zivra::desktop
