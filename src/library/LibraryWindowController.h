#pragma once

#include <QUrl>

#include <optional>

namespace zivra {

/// The window over the library of recordings. Main thread only.
class LibraryWindowController {
public:
    virtual ~LibraryWindowController() = default;

    /// Shows the window, on that recording if one is given.
    virtual void show(const std::optional<QUrl> &focus) = 0;

    LibraryWindowController() = default;
    LibraryWindowController(const LibraryWindowController &) = delete;
    LibraryWindowController &operator=(const LibraryWindowController &) = delete;
};

} // namespace zivra
