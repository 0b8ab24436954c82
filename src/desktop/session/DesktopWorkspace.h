#pragma once

#include "platform/Workspace.h"

namespace zivra::desktop {

/// Hands web pages and files to the user's programs, and finds the settings program of the desktop at hand.
class DesktopWorkspace final : public Workspace {
public:
    /// Takes http, https and file URLs; anything else is ignored.
    void open(const QUrl &url) override;
    void openPrivacySettings(const QString &pane) override;
};

} // namespace zivra::desktop
