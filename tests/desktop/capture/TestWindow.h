#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRect>

#include <array>
#include <cstdint>

namespace zivra::desktop {

inline constexpr std::uint32_t kBlue = 0x2040c0;
inline constexpr std::uint32_t kGreen = 0x30b050;
inline constexpr std::uint32_t kRed = 0xc03020;
inline constexpr std::uint32_t kBlack = 0;

/// A window of one colour, which the server itself keeps painted.
class TestWindow {
public:
    enum class Kind { Managed, Overlay };

    TestWindow(QRect place, std::uint32_t colour, Kind kind = Kind::Overlay) : m_id(xcb_generate_id(server()))
    {
        const std::array<std::uint32_t, 2> values{colour, kind == Kind::Overlay ? 1U : 0U};
        xcb_create_window(server(), XCB_COPY_FROM_PARENT, m_id, m_connection.root(),
                          static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()),
                          static_cast<std::uint16_t>(place.width()),
                          static_cast<std::uint16_t>(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
        // USPosition and USSize of WM_NORMAL_HINTS (ICCCM 4.1.2.3): the window manager keeps the place.
        const std::array<std::uint32_t, 18> hints{1U | 2U};
        xcb_change_property(server(), XCB_PROP_MODE_REPLACE, m_id, XCB_ATOM_WM_NORMAL_HINTS,
                            XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
        setShown(true);
    }
    ~TestWindow() { close(); }
    TestWindow(const TestWindow &) = delete;
    TestWindow &operator=(const TestWindow &) = delete;

    [[nodiscard]] xcb_window_t id() const { return m_id; }

    void setShown(bool isShown)
    {
        isShown ? xcb_map_window(server(), m_id) : xcb_unmap_window(server(), m_id);
        sync();
    }
    void move(int x, int y)
    {
        const std::array<std::int32_t, 2> place{x, y};
        xcb_configure_window(server(), m_id, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data());
        sync();
    }
    void lower()
    {
        constexpr std::uint32_t kBelow = XCB_STACK_MODE_BELOW;
        xcb_configure_window(server(), m_id, XCB_CONFIG_WINDOW_STACK_MODE, &kBelow);
        sync();
    }
    void paint(std::uint32_t colour)
    {
        xcb_change_window_attributes(server(), m_id, XCB_CW_BACK_PIXEL, &colour);
        xcb_clear_area(server(), 0, m_id, 0, 0, 0, 0);
        sync();
    }
    void close()
    {
        xcb_destroy_window(server(), m_id);
        sync();
    }
    /// The window with the frame that a window manager gave it, in pixels of the root window.
    [[nodiscard]] QRect outline() const
    {
        xcb_window_t top = m_id;
        for (;;) {
            const auto tree = m_connection.reply(xcb_query_tree_reply, xcb_query_tree(server(), top));
            if (!tree || tree->parent == m_connection.root()) {
                break;
            }
            top = tree->parent;
        }
        const auto geometry = m_connection.reply(xcb_get_geometry_reply, xcb_get_geometry(server(), top));
        return geometry ? QRect(geometry->x, geometry->y, geometry->width, geometry->height) : QRect();
    }

private:
    [[nodiscard]] xcb_connection_t *server() const { return m_connection.get(); }
    /// Waits until the server has done all that it was asked for.
    void sync() const
    {
        static_cast<void>(m_connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(server())));
    }

    XcbConnection m_connection;
    xcb_window_t m_id;
};

} // namespace zivra::desktop
