#include "desktop/x11/panels/X11PanelSurfaces.h"

#include "desktop/x11/panels/X11PanelSurface.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>

namespace zivra::desktop {

namespace {

/// The window manager's frame around a window, or the window itself where it has none.
xcb_window_t topLevelOf(const XcbConnection &connection, xcb_window_t window)
{
    while (true) {
        const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window));
        if (!tree || tree->parent == XCB_WINDOW_NONE) {
            return XCB_WINDOW_NONE;
        }
        if (tree->parent == tree->root) {
            return window;
        }
        window = tree->parent;
    }
}

} // namespace

X11PanelSurfaces::X11PanelSurfaces()
    : m_stack([this] {
          std::vector<xcb_window_t> dialogs;
          for (const QWindow *window : QGuiApplication::topLevelWindows()) {
              if (window->type() == Qt::Dialog && window->isVisible()) {
                  const auto id = static_cast<xcb_window_t>(window->winId());
                  dialogs.push_back(topLevelOf(m_stack.connection(), id));
              }
          }
          std::erase(dialogs, XCB_WINDOW_NONE);
          return dialogs;
      })
{
    // Small pictures that change rarely: without a start-up of the graphics driver, in a third of the memory.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQuickWindow::setDefaultAlphaBuffer(true);
}

std::unique_ptr<PanelSurface> X11PanelSurfaces::makePanel(const PanelStyle &style)
{
    return std::make_unique<X11PanelSurface>(style, m_stack);
}

} // namespace zivra::desktop
