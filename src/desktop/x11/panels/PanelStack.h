#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <vector>

namespace zivra::desktop {

/// Keeps our panels above all other windows, in the order of their levels, whatever is clicked or raised.
/// Main thread only.
///
/// It listens to the server on a connection of its own, while there are panels. It moves windows only when
/// their order is not right, and ten times a second at most, so that it cannot spin with another program of
/// the same mind.
class PanelStack : public QObject {
public:
    /// The level of the windows that `dialogs` tells, so that none is buried beneath a sheet.
    static constexpr int kDialogLevel = 8;

    /// `dialogs`: those of our windows that the window manager manages and that ask the user something.
    explicit PanelStack(std::function<std::vector<xcb_window_t>()> dialogs);

    [[nodiscard]] const XcbConnection &connection() const { return m_connection; }

    /// From now on the window, a child of the root, is at its level; above the others of that level.
    void add(xcb_window_t window, int level);
    void remove(xcb_window_t window);

private:
    struct Panel {
        xcb_window_t window = XCB_WINDOW_NONE;
        int level = 0;
    };

    void listen(bool listens);
    void readEvents();
    void restack();
    [[nodiscard]] std::vector<xcb_window_t> wanted() const;
    [[nodiscard]] bool isInOrder(const std::vector<xcb_window_t> &wanted) const;
    [[nodiscard]] bool covers(xcb_window_t window) const;

    XcbConnection m_connection;
    std::function<std::vector<xcb_window_t>()> m_dialogs;
    std::vector<Panel> m_panels; ///< lowest first
    QSocketNotifier m_notifier;
    QTimer m_soon;
    QElapsedTimer m_sinceLast;
};

} // namespace zivra::desktop
