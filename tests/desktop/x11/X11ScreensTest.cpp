#include "desktop/x11/X11Screens.h"

#include "TestClient.h"
#include "desktop/x11/X11ContentQuery.h"
#include "desktop/x11/X11Scale.h"
#include "support/Eventually.h"
#include "support/PrintQt.h"

#include <QScopeGuard>

#include <gtest/gtest.h>

namespace zivra::desktop {
namespace {

TEST(X11Screens, MeasureInPointsOfWhatQtMakesOfTheResolution)
{
    const TestClient client;
    const auto scale = [&](QByteArrayView resources) {
        client.setText(client.root(), "RESOURCE_MANAGER", "STRING", resources);
        return pixelsPerPoint(client);
    };
    const auto restore = qScopeGuard([&] { scale(""); });
    EXPECT_EQ(scale(""), 1);
    EXPECT_EQ(scale("Xft.antialias:\t1\nXft.dpi:\t144\nXft.dpix:\t1\n"), 1.5);
    EXPECT_EQ(scale("Xft.dpi:\t120.7"), 121 / 96.0);
    EXPECT_EQ(scale("Xft.dpi:\t60"), 1);
    EXPECT_EQ(scale("Xft.dpi:\tmany"), 1);
    qputenv("QT_SCALE_FACTOR", "2");
    EXPECT_EQ(scale("Xft.dpi:\t144"), 3);
    qunsetenv("QT_SCALE_FACTOR");
    ASSERT_EQ(scale("Xft.dpi:\t192\n"), 2);

    xcb_warp_pointer(client.get(), XCB_WINDOW_NONE, client.root(), 0, 0, 0, 0, 300, 150);
    const auto window = client.showWindow({.overridesRedirect = true});

    const X11Screens screens;
    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 1);
    EXPECT_EQ(all.front().backingScaleFactor, 2);
    const auto &server = client.screen();
    EXPECT_EQ(all.front().frame, QRectF(0, 0, server.width_in_pixels / 2.0, server.height_in_pixels / 2.0));
    EXPECT_EQ(screens.mouseLocation(), QPointF(150, 75));

    const auto content = X11ContentQuery().shareableContent(false, true).result();
    EXPECT_EQ(content.displays.at(0).displayID, all.front().displayID);
    EXPECT_EQ(content.windows.at(0).windowID, window);
    EXPECT_EQ(content.windows.at(0).frame, QRectF(100, 75, 150, 100));
}

TEST(X11Screens, LeaveOutWhatDocksHaveReserved)
{
    const TestClient client;
    const auto dock = client.showWindow({.type = "DOCK"});
    // Along the whole left edge, and at the bottom, but there only beyond the display.
    client.setNumbers(dock, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL,
                      {60, 0, 0, 40, 0, 9999, 0, 0, 0, 0, 10'000, 10'999});
    const X11Screens screens;
    const auto &server = client.screen();
    const QRectF left(60, 0, server.width_in_pixels - 60, server.height_in_pixels);
    EXPECT_TRUE(eventually([&] { return screens.screens().front().visibleFrame == left; }));
}

} // namespace
} // namespace zivra::desktop
