#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "desktop/media/ReaderOutput.h"

namespace zivra::desktop {

/// The packets of one track as they are stored.
class TrackOutput final : public ReaderOutput {
public:
    TrackOutput(ReaderProgress &progress, QString path, int track);

    void open() override;

protected:
    std::optional<MediaSample> readNext() override;

private:
    const QString m_path;
    const int m_track;
    InputContextPtr m_input;
    PacketPtr m_packet;
};

} // namespace zivra::desktop
