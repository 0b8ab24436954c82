#pragma once

#include "desktop/x11/capture/X11PictureSource.h"

#include <QByteArray>

#include <utility>

namespace zivra::desktop {

/// Makes sources of an X server's picture. May be used from any thread.
class X11PictureSourceFactory final : public PictureSourceFactory {
public:
    /// A display such as ":0"; empty stands for $DISPLAY.
    explicit X11PictureSourceFactory(QByteArray displayName = {}) : m_displayName(std::move(displayName)) {}

    [[nodiscard]] std::unique_ptr<CaptureSource>
    makePictureSource(const ContentFilter &filter, const CaptureConfiguration &configuration) override
    {
        return std::make_unique<X11PictureSource>(m_displayName, filter, configuration);
    }

private:
    QByteArray m_displayName;
};

} // namespace zivra::desktop
