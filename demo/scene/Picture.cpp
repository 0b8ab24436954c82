#include "Picture.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace zivra::scene {

namespace {

constexpr unsigned kWhite = 0xffffff;
constexpr unsigned kBlack = 0x000000;
constexpr int kCells = 18;

struct FreeEvent {
    void operator()(xcb_generic_event_t *event) const
    {
        std::free(event); // NOLINT(cppcoreguidelines-owning-memory): the library hands out malloc'ed events
    }
};
using Event = std::unique_ptr<xcb_generic_event_t, FreeEvent>;

} // namespace

Picture::Picture(const PictureOptions &options)
    : m_options(options),
      m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection.get()) != 0) {
        throw std::runtime_error("no X server");
    }
    xcb_connection_t *const c = m_connection.get();
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    if (m_options.width == 0) {
        m_options.width = screen->width_in_pixels;
        m_options.height = screen->height_in_pixels;
        m_options.overrideRedirect = true;
    }
    m_window = xcb_generate_id(c);
    const std::array<std::uint32_t, 3> values{m_options.colour, m_options.overrideRedirect ? 1U : 0U,
                                              XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, m_window, screen->root, static_cast<std::int16_t>(m_options.x),
                      static_cast<std::int16_t>(m_options.y), static_cast<std::uint16_t>(m_options.width),
                      static_cast<std::uint16_t>(m_options.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                      values.data());
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(m_options.title.size()), m_options.title.data());
    // User-given position (ICCCM, WM_NORMAL_HINTS), so that the window manager places it where it was asked
    // for.
    const std::array<std::uint32_t, 18> hints{1};
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
                        32, hints.size(), hints.data());
    m_buffer = xcb_generate_id(c);
    xcb_create_pixmap(c, screen->root_depth, m_buffer, m_window, static_cast<std::uint16_t>(m_options.width),
                      static_cast<std::uint16_t>(m_options.height));
    m_gc = xcb_generate_id(c);
    const std::uint32_t noExposures = 0;
    xcb_create_gc(c, m_gc, m_buffer, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    fill(m_options.colour, 0, 0, m_options.width, m_options.height);
    xcb_map_window(c, m_window);
    xcb_flush(c);
}

void Picture::fill(unsigned colour, int x, int y, int width, int height)
{
    const std::uint32_t pixel = colour;
    xcb_change_gc(m_connection.get(), m_gc, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t rectangle{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                    static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
    xcb_poly_fill_rectangle(m_connection.get(), m_buffer, m_gc, 1, &rectangle);
}

void Picture::drawCode(int frame)
{
    const int height = m_options.height / 10;
    int parity = 0;
    for (int cell = 0; cell < kCells; ++cell) {
        int bit = 1;
        if (cell == kCells - 1) {
            bit = parity;
        } else if (cell > 0) {
            bit = (frame >> (kCells - 2 - cell)) & 1;
            parity ^= bit;
        }
        const int left = m_options.width * cell / kCells;
        const int right = m_options.width * (cell + 1) / kCells;
        fill(bit != 0 ? kWhite : kBlack, left, 0, right - left, height);
    }
}

void Picture::drawBars(int frame)
{
    constexpr int kBars = 16;
    constexpr int kStep = 8; // pixels a frame
    const int top = m_options.height / 5;
    const bool isSmall = m_options.motion == Motion::Small;
    const int width = isSmall ? 400 : m_options.width;
    const int height = isSmall ? 300 : m_options.height - top;
    for (int bar = 0; bar < kBars; ++bar) {
        const unsigned shade = 0x20U + static_cast<unsigned>(bar) * 12;
        const unsigned colour = (shade << 16) | ((0xffU - shade) << 8) | ((shade * 7) & 0xffU);
        const int x = (width * bar / kBars + frame * kStep) % width;
        fill(colour, x, top, width / kBars / 2, height);
    }
}

void Picture::drawDigit(int digit, int x, int y, int width)
{
    // Seven segments, a bit each: top, upper right, lower right, bottom, lower left, upper left, middle.
    constexpr std::array<int, 10> kSegments{0x3f, 0x06, 0x5b, 0x4f, 0x66, 0x6d, 0x7d, 0x07, 0x7f, 0x6f};
    const int stroke = width / 5;
    const int half = width - stroke;
    const std::array<xcb_point_t, 7> from{{{0, 0}, {1, 0}, {1, 1}, {0, 2}, {0, 1}, {0, 0}, {0, 1}}};
    for (std::size_t segment = 0; segment < from.size(); ++segment) {
        const bool isFlat = segment % 3 == 0;
        if ((kSegments.at(static_cast<std::size_t>(digit)) >> segment & 1) != 0) {
            fill(kWhite, x + from.at(segment).x * half, y + from.at(segment).y * half,
                 isFlat ? width : stroke, isFlat ? stroke : width);
        }
    }
}

void Picture::drawNumber(int frame)
{
    constexpr int kDigits = 5;
    const int pitch = m_options.height / 10;
    int x = m_options.width / 2 + pitch * kDigits / 2;
    for (int digit = 0; digit < kDigits; ++digit, frame /= 10) {
        x -= pitch;
        drawDigit(frame % 10, x, m_options.height * 2 / 5, pitch * 2 / 3);
    }
}

void Picture::draw(int frame, bool flash)
{
    const int strip = m_options.height / 10;
    fill(m_options.colour, 0, 2 * strip, m_options.width, m_options.height - 2 * strip);
    drawCode(frame);
    fill(flash ? kWhite : kBlack, 0, strip, m_options.width, strip);
    drawBars(frame);
    if (m_options.motion == Motion::Full) {
        drawNumber(frame);
    }
    xcb_copy_area(m_connection.get(), m_buffer, m_window, m_gc, 0, 0, 0, 0,
                  static_cast<std::uint16_t>(m_options.width), static_cast<std::uint16_t>(m_options.height));
    xcb_flush(m_connection.get());
}

bool Picture::isAlive()
{
    while (const Event event{xcb_poll_for_event(m_connection.get())}) {
        if ((event->response_type & 0x7f) == XCB_DESTROY_NOTIFY) {
            return false;
        }
    }
    return xcb_connection_has_error(m_connection.get()) == 0;
}

} // namespace zivra::scene
