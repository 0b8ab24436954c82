#pragma once

#include "desktop/x11/capture/ServerEvents.h"
#include "desktop/x11/capture/SharedImage.h"

#include <QPoint>
#include <QRegion>

namespace zivra::desktop {

/// What of the screen a capture shows, without the cursor and other things drawn over it. Regions are in the
/// picture's pixels.
class PictureContent {
public:
    virtual ~PictureContent() = default;

    virtual void note(ServerEvents::Kind kind, const xcb_generic_event_t &event) = 0;
    [[nodiscard]] virtual bool mayHaveChanged() const = 0;
    /// What differs from the last time; may be larger than that, and reach beyond the picture. Throws
    /// `PlatformError` when there is nothing left to show.
    [[nodiscard]] virtual QRegion takeChanges() = 0;
    /// Reads all rows that the region touches. False when the server could not: the region is still to be
    /// read.
    [[nodiscard]] virtual bool read(SharedImage &image, const QRegion &region) = 0;
    /// Asked when all that the server sent up to the end of a reading was noted: whether the reading may hold
    /// what must not be shown, so that the changes have to be taken and read once more.
    [[nodiscard]] virtual bool mustReadAgain() = 0;
    /// There is no picture now, also none in a reading just made: the last frame goes on being shown.
    [[nodiscard]] virtual bool isHeld() const { return false; }
    /// Where the picture's top left is in the root window now, in pixels.
    [[nodiscard]] virtual QPoint origin() const = 0;
};

} // namespace zivra::desktop
