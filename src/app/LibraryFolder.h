#pragma once

#include "library/LibraryWindowController.h"
#include "platform/Workspace.h"

#include <functional>
#include <utility>

namespace zivra {

/// Shows the recordings in the desktop's own file manager. A new recording alone opens nothing: its
/// place is the clipboard, and a file manager in the user's way after each take would be a nuisance.
class LibraryFolder final : public LibraryWindowController {
public:
    LibraryFolder(Workspace &workspace, std::function<QUrl()> folder)
        : m_workspace(workspace),
          m_folder(std::move(folder))
    {
    }

    void show(const std::optional<QUrl> &focus) override
    {
        if (!focus) {
            m_workspace.open(m_folder());
        }
    }

private:
    Workspace &m_workspace;
    std::function<QUrl()> m_folder;
};

} // namespace zivra
