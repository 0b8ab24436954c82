#pragma once

#include <QImage>

namespace zivra::bench {

/// An opaque picture that is as hard to encode as a photograph with captions: smooth noise down to the pixel,
/// sharp edges, and words. The same for the same arguments.
QImage landscape(QSize size, unsigned seed);

} // namespace zivra::bench
