#include "app/RecordArguments.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zivra {

namespace {

[[noreturn]] void refuse(const QString &option, const QString &value, const QString &expected)
{
    throw ArgumentError(QStringLiteral("bad value \"%1\" for %2: %3").arg(value, option, expected));
}

/// Hands out the words of a command line one by one.
class Words {
public:
    explicit Words(QStringList words) : m_words(std::move(words)) {}

    [[nodiscard]] bool atEnd() const { return m_next >= m_words.size(); }
    QString take() { return m_words.at(m_next++); }
    QString valueOf(const QString &option)
    {
        if (atEnd()) {
            throw ArgumentError(QStringLiteral("%1 needs a value").arg(option));
        }
        return take();
    }
    /// The next word unless it is another option.
    std::optional<QString> optionalValue()
    {
        return atEnd() || m_words.at(m_next).startsWith(QLatin1String("--")) ? std::nullopt
                                                                             : std::optional(take());
    }

private:
    QStringList m_words;
    qsizetype m_next = 0;
};

double seconds(const QString &option, const QString &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    constexpr double kLongest = 7 * 24 * 3600;
    if (!isNumber || !std::isfinite(number) || number <= 0 || number > kLongest) {
        refuse(option, value, QStringLiteral("a number of seconds above 0"));
    }
    return number;
}

/// Decimal, or hexadecimal with 0x as window tools print it.
std::uint32_t identifier(const QString &option, const QString &value)
{
    bool isNumber = false;
    const std::uint32_t number = value.toUInt(&isNumber, 0);
    if (!isNumber || number == 0) {
        refuse(option, value, QStringLiteral("a number above 0"));
    }
    return number;
}

QRectF rectangle(const QString &option, const QString &value)
{
    const QStringList parts = value.split(QLatin1Char(','));
    std::array<int, 4> numbers{};
    bool isRectangle = parts.size() == 4;
    for (qsizetype index = 0; isRectangle && index < 4; ++index) {
        numbers.at(static_cast<std::size_t>(index)) = parts.at(index).toInt(&isRectangle);
    }
    const auto [x, y, width, height] = numbers;
    if (!isRectangle || x < 0 || y < 0 || width <= 0 || height <= 0) {
        refuse(option, value, QStringLiteral("X,Y,WIDTH,HEIGHT in points"));
    }
    return {static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
            static_cast<double>(height)};
}

CaptureArea area(const QString &option, const QString &value)
{
    const auto known = captureAreaFromRawValue(value);
    if (!known) {
        refuse(option, value, QStringLiteral("fullScreen, window or customArea"));
    }
    return *known;
}

VideoQuality quality(const QString &option, const QString &value)
{
    const auto known = videoQualityFromRawValue(value.toInt());
    if (!known) {
        refuse(option, value, QStringLiteral("480, 720 or 1080"));
    }
    return *known;
}

RecordingMode mode(const QString &option, const QString &value)
{
    const auto known = recordingModeFromRawValue(value);
    if (!known) {
        refuse(option, value, QStringLiteral("screenOnly, screenAndCamera or cameraOnly"));
    }
    return *known;
}

/// What is only told in part follows from the rest: a window or a rectangle names its area.
RecordArguments completed(RecordArguments arguments, bool areaGiven)
{
    if (!areaGiven && arguments.windowID != 0) {
        arguments.area = CaptureArea::Window;
    } else if (!areaGiven && arguments.rectangle) {
        arguments.area = CaptureArea::CustomArea;
    }
    if (arguments.area == CaptureArea::Window && arguments.windowID == 0) {
        throw ArgumentError(QStringLiteral("--area window needs --window ID"));
    }
    if (arguments.area == CaptureArea::CustomArea && !arguments.rectangle) {
        throw ArgumentError(QStringLiteral("--area customArea needs --rect X,Y,WIDTH,HEIGHT"));
    }
    return arguments;
}

} // namespace

RecordArguments RecordArguments::parse(const QStringList &arguments)
{
    RecordArguments result;
    bool areaGiven = false;
    bool cameraGiven = false;
    Words words(arguments);
    while (!words.atEnd()) {
        const QString option = words.take();
        if (option == QLatin1String("--seconds")) {
            result.seconds = zivra::seconds(option, words.valueOf(option));
        } else if (option == QLatin1String("--mode")) {
            result.mode = zivra::mode(option, words.valueOf(option));
        } else if (option == QLatin1String("--area")) {
            result.area = zivra::area(option, words.valueOf(option));
            areaGiven = true;
        } else if (option == QLatin1String("--window")) {
            result.windowID = identifier(option, words.valueOf(option));
        } else if (option == QLatin1String("--display")) {
            result.displayID = identifier(option, words.valueOf(option));
        } else if (option == QLatin1String("--rect")) {
            result.rectangle = zivra::rectangle(option, words.valueOf(option));
        } else if (option == QLatin1String("--quality")) {
            result.quality = zivra::quality(option, words.valueOf(option));
        } else if (option == QLatin1String("--system-audio")) {
            result.systemAudio = true;
        } else if (option == QLatin1String("--microphone")) {
            result.microphone = true;
            result.microphoneID = words.optionalValue().value_or(QString());
        } else if (option == QLatin1String("--camera")) {
            cameraGiven = true;
            result.cameraID = words.optionalValue().value_or(QString());
        } else if (option == QLatin1String("--clicks")) {
            result.clicks = true;
        } else {
            throw ArgumentError(QStringLiteral("unknown option \"%1\"").arg(option));
        }
    }
    if (cameraGiven && result.mode == RecordingMode::ScreenOnly) {
        throw ArgumentError(QStringLiteral("--camera needs --mode screenAndCamera or cameraOnly"));
    }
    return completed(result, areaGiven);
}

} // namespace zivra
