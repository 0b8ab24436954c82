#include "desktop/session/TrayBackdrop.h"

#include <QGuiApplication>
#include <QImage>
#include <QPalette>
#include <QPixmap>
#include <QScreen>

namespace zivra::desktop {

namespace {

constexpr auto lightTint = QColor(255, 255, 255);
constexpr auto darkTint = QColor(46, 46, 46);

QColor readableOver(int gray)
{
    return gray < 140 ? lightTint : darkTint;
}

} // namespace

QColor presumedTrayTint()
{
    // Plasma colours its panel like its windows; elsewhere panels are dark more often than not.
    if (qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains(QStringLiteral("KDE"))) {
        return QGuiApplication::palette().color(QPalette::WindowText);
    }
    return lightTint;
}

std::optional<QColor> trayTintOver(const QRect &iconFrame)
{
    auto *screen = QGuiApplication::screenAt(iconFrame.center());
    if (!screen || iconFrame.width() < 4 || iconFrame.height() < 4) {
        return std::nullopt;
    }
    // No glyph reaches into the corners of its square.
    const auto origin = iconFrame.topLeft() - screen->geometry().topLeft();
    const auto picture =
        screen->grabWindow(0, origin.x(), origin.y(), iconFrame.width(), iconFrame.height()).toImage();
    if (picture.isNull()) {
        return std::nullopt;
    }
    const int right = picture.width() - 1;
    const int bottom = picture.height() - 1;
    int sum = 0;
    for (const auto &corner : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)}) {
        sum += qGray(picture.pixel(corner));
    }
    return readableOver(sum / 4);
}

} // namespace zivra::desktop
