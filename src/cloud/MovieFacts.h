#pragma once

#include "platform/MovieAsset.h"

#include <QByteArray>
#include <QCoroTask>
#include <QSize>
#include <QUrl>

#include <optional>

namespace zivra {

/// What a server can be told of a movie before it has it. All of it may be missing.
struct MovieFacts {
    std::optional<double> duration; ///< seconds
    std::optional<QSize> size;      ///< in pixels, as displayed
    QByteArray thumbnail;           ///< JPEG, of 1280x1280 pixels at most; empty without one
};

/// Never fails: what cannot be read is not told.
[[nodiscard]] QCoro::Task<MovieFacts> movieFacts(QUrl file, MovieServices &movies);

} // namespace zivra
