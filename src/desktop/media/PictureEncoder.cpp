#include "desktop/media/PictureEncoder.h"

#include "desktop/media/LibavPictureEncoder.h"
#ifdef ZIVRA_HAS_X264
#include "desktop/media/X264PictureEncoder.h"
#endif

namespace zivra::desktop {

PictureEncoder::PictureEncoder(const VideoSettings &settings)
    : m_settings(settings),
      m_fitter(settings.width, settings.height)
{
}

bool PictureEncoder::accepts(const MediaSample &sample) const
{
    const auto picture = sample.videoFrame();
    return picture && picture->width > 0 && picture->height > 0;
}

void PictureEncoder::encode(const MediaSample &sample, MediaTime time)
{
    const auto ticks = ticksFrom(time, kTimeBase);
    if (ticks <= m_lastTime) {
        return; // before the movie's start, or no later than the picture before
    }
    m_lastTime = ticks;
    encodePicture(m_fitter.fit(sample.videoFrame()), ticks);
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
