#pragma once

#include <QImage>

namespace zivra::bench {

/// A desktop at work: a wallpaper, a panel, and windows with text.
QImage desktopPage();

/// Paragraphs under headings, black on white, which go on from the lower edge at the upper one.
QImage textColumn(QSize size);

} // namespace zivra::bench
