#include "desktop/media/EncodedTrackFormat.h"

namespace zivra::desktop {

EncodedTrackFormat::EncodedTrackFormat(const AVCodecParameters &parameters, AVRational timeBase)
    : m_parameters(copyOf(parameters)),
      m_timeBase(timeBase)
{
    // A tag need not exist in every container, but this one, which does, tells that the decoder's set-up is
    // in the index alone: the muxer would not choose it by itself.
    if (m_parameters->codec_tag != MKTAG('h', 'v', 'c', '1')) {
        m_parameters->codec_tag = 0;
    }
}

} // namespace zivra::desktop
