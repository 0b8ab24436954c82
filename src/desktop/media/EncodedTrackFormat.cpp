#include "desktop/media/EncodedTrackFormat.h"

namespace zivra::desktop {

EncodedTrackFormat::EncodedTrackFormat(const AVCodecParameters &parameters, AVRational timeBase)
    : m_parameters(copyOf(parameters)),
      m_timeBase(timeBase)
{
    // The tag of the source container need not exist in the target's.
    m_parameters->codec_tag = 0;
}

} // namespace zivra::desktop
