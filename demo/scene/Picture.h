#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <string>

namespace zivra::scene {

enum class Motion { Full, Small, Still };

struct PictureOptions {
    int x = 0;
    int y = 0;
    int width = 0; ///< pixels; 0: the whole screen
    int height = 0;
    bool overrideRedirect = false;
    Motion motion = Motion::Full;
    std::string title = "Zivra scene";
    unsigned colour = 0x206080; ///< of the background, 0xRRGGBB
};

/// A window that shows the number of its frame. From top to bottom: a tenth of the height with 18 cells
/// (white, the number's 16 low bits from the highest, their parity; white is one), a tenth that is white in
/// the frames that flash, and moving bars with the number in digits.
class Picture {
public:
    explicit Picture(const PictureOptions &options);

    void draw(int frame, bool flash);
    /// False when the window or the server has gone.
    [[nodiscard]] bool isAlive();

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    void fill(unsigned colour, int x, int y, int width, int height);
    void drawCode(int frame);
    void drawBars(int frame);
    void drawDigit(int digit, int x, int y, int width);
    void drawNumber(int frame);

    PictureOptions m_options;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_window_t m_window = 0;
    xcb_pixmap_t m_buffer = 0;
    xcb_gcontext_t m_gc = 0;
};

} // namespace zivra::scene
