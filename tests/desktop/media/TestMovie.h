#pragma once

#include "platform/MediaSample.h"
#include "platform/MovieWriter.h"

#include <QDir>
#include <QTemporaryDir>
#include <QUrl>

namespace zivra::test {

constexpr int kWidth = 320;
constexpr int kHeight = 160;
/// Where the clock stands when a session starts: no test may depend on it being zero.
constexpr MediaTime kSessionStart = MediaTime::fromSeconds(1234.5);

/// A folder that is removed at the end of a test.
class MovieFolder {
public:
    [[nodiscard]] QUrl url(const char *name) const
    {
        return QUrl::fromLocalFile(m_folder.filePath(QString::fromUtf8(name)));
    }
    /// Of all files, hidden ones too.
    [[nodiscard]] QStringList names() const
    {
        return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

private:
    QTemporaryDir m_folder;
};

VideoSettings videoSettings(VideoCodec codec = VideoCodec::H264);

/// A picture that carries `number` in 12 stripes, at `seconds` of the session.
MediaSample numberedFrame(int number, double seconds, int width = kWidth);

/// Sound with a click of one frame at each of the given places, on a tone of `toneLevel`.
struct SoundOptions {
    AudioFormat format{};
    float toneLevel = 0;
    std::vector<double> clicks{}; ///< seconds of the session
};
MediaSample soundBlock(double seconds, double duration, const SoundOptions &options = {});

} // namespace zivra::test
