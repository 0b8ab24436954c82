// Two windows above all others, as a recorder has them: a bar that a recording is to leave out, dragged to
// and fro all the time, and a transparent sheet with a stroke that it is to show. Prints the bar's number and
// stays until ended.

#include <xcb/xcb.h>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>

namespace {

struct Place {
    std::int16_t x;
    std::int16_t y;
    std::uint16_t width;
    std::uint16_t height;
};

// Colours that the scenes do not have, as alpha, red, green and blue.
constexpr std::uint32_t kBarColour = 0xffff00ff;
constexpr std::uint32_t kStrokeColour = 0xff00ff00;
constexpr Place kBar{760, 980, 400, 60};
constexpr Place kStroke{100, 600, 400, 20};

struct Disconnect {
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

xcb_visualid_t visualWithAlpha(const xcb_screen_t *screen)
{
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth == 32) {
            return xcb_depth_visuals_iterator(depth.data).data->visual_id;
        }
    }
    return XCB_NONE;
}

xcb_window_t openWindow(xcb_connection_t *c, const xcb_screen_t *screen, const Place &place,
                        std::uint32_t colour)
{
    const xcb_visualid_t visual = visualWithAlpha(screen);
    const xcb_colormap_t colours = xcb_generate_id(c);
    xcb_create_colormap(c, XCB_COLORMAP_ALLOC_NONE, colours, screen->root, visual);
    const xcb_window_t window = xcb_generate_id(c);
    const std::array<std::uint32_t, 4> values{colour, 0, 1, colours};
    xcb_create_window(c, 32, window, screen->root, place.x, place.y, place.width, place.height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
                      values.data());
    xcb_map_window(c, window);
    return window;
}

void drawStroke(xcb_connection_t *c, xcb_window_t sheet)
{
    const xcb_gcontext_t gc = xcb_generate_id(c);
    xcb_create_gc(c, gc, sheet, XCB_GC_FOREGROUND, &kStrokeColour);
    const xcb_rectangle_t stroke{kStroke.x, kStroke.y, kStroke.width, kStroke.height};
    xcb_poly_fill_rectangle(c, sheet, gc, 1, &stroke);
}

/// Along the lower edge of the screen, 60 times a second, until one of the signals comes.
void drag(xcb_connection_t *c, xcb_window_t bar, const sigset_t &ends)
{
    constexpr timespec kStep{0, 1'000'000'000 / 60};
    for (int step = 0; sigtimedwait(&ends, nullptr, &kStep) < 0; ++step) {
        const double angle = step / 20.0;
        const std::array<std::uint32_t, 2> place{
            static_cast<std::uint32_t>(kBar.x + std::lround(700 * std::sin(angle))),
            static_cast<std::uint32_t>(kBar.y + std::lround(30 * std::cos(3 * angle)))};
        xcb_configure_window(c, bar, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data());
        xcb_flush(c);
    }
}

} // namespace

int main()
{
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);

    const Connection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) {
        std::fputs("zivra-bench-overlays: no X server\n", stderr);
        return 1;
    }
    xcb_connection_t *const c = connection.get();
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const xcb_window_t sheet =
        openWindow(c, screen, {0, 0, screen->width_in_pixels, screen->height_in_pixels}, 0);
    const xcb_window_t bar = openWindow(c, screen, kBar, kBarColour);
    drawStroke(c, sheet);
    xcb_flush(c);
    std::printf("%u\n", bar);
    std::fflush(stdout);
    drag(c, bar, ends);
    return 0;
}
