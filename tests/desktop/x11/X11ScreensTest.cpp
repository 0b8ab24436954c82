#include "desktop/x11/X11Screens.h"

#include "TestClient.h"
#include "desktop/x11/X11ContentQuery.h"
#include "desktop/x11/X11Scale.h"
#include "support/PrintQt.h"

#include <QScopeGuard>

#include <gtest/gtest.h>

namespace zivra::desktop {
namespace {

void setResources(const TestClient &client, QByteArrayView resources)
{
    client.setText(client.root(), "RESOURCE_MANAGER", "STRING", resources);
}

TEST(X11Scale, IsWhatQtMakesOfTheResolution)
{
    const TestClient client;
    const auto restore = qScopeGuard([&] {
        setResources(client, "");
        qunsetenv("QT_SCALE_FACTOR");
    });
    const auto scale = [&](QByteArrayView resources) {
        setResources(client, resources);
        return pixelsPerPoint(client);
    };
    EXPECT_EQ(scale(""), 1);
    EXPECT_EQ(scale("Xft.antialias:\t1\nXft.dpi:\t144\nXft.dpix:\t1\n"), 1.5);
    EXPECT_EQ(scale("Xft.dpi:\t120.7"), 121 / 96.0);
    EXPECT_EQ(scale("Xft.dpi:\t60"), 1);
    EXPECT_EQ(scale("Xft.dpi:\t-5"), 1);
    EXPECT_EQ(scale("Xft.dpi:\tmany"), 1);
    qputenv("QT_SCALE_FACTOR", "2");
    EXPECT_EQ(scale("Xft.dpi:\t144"), 3);
    qputenv("QT_SCALE_FACTOR", "0");
    EXPECT_EQ(scale("Xft.dpi:\t144"), 1.5);
}

TEST(X11Screens, MeasuresInPoints)
{
    const TestClient client;
    const auto restore = qScopeGuard([&] { setResources(client, ""); });
    setResources(client, "Xft.dpi:\t192\n");
    xcb_warp_pointer(client.get(), XCB_WINDOW_NONE, client.root(), 0, 0, 0, 0, 300, 150);
    const auto window = client.showWindow({.pixels = QRect(100, 40, 300, 200), .overridesRedirect = true});

    const X11Screens screens;
    const auto all = screens.screens();
    ASSERT_EQ(all.size(), 1);
    EXPECT_NE(all.front().displayID, 0);
    EXPECT_EQ(all.front().name, "screen");
    EXPECT_EQ(all.front().backingScaleFactor, 2);
    const auto &server = client.screen();
    EXPECT_EQ(all.front().frame, QRectF(0, 0, server.width_in_pixels / 2.0, server.height_in_pixels / 2.0));
    EXPECT_EQ(screens.mouseLocation(), QPointF(150, 75));

    const auto content = X11ContentQuery().shareableContent(false, true).result();
    ASSERT_EQ(content.displays.size(), 1);
    EXPECT_EQ(content.displays.front().displayID, all.front().displayID);
    EXPECT_EQ(content.displays.front().frame, all.front().frame);
    const auto found = std::ranges::find(content.windows, window, &ShareableWindow::windowID);
    ASSERT_NE(found, content.windows.end());
    EXPECT_EQ(found->frame, QRectF(50, 20, 150, 100));
}

} // namespace
} // namespace zivra::desktop
