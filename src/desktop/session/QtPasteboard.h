#pragma once

#include "platform/Pasteboard.h"

namespace zivra::desktop {

/// The desktop's clipboard through QClipboard. Its content lives as long as the program, or as the
/// desktop's clipboard manager keeps it.
class QtPasteboard final : public Pasteboard {
public:
    void setString(const QString &text) override;
    void setFile(const QUrl &fileURL) override;
};

} // namespace zivra::desktop
