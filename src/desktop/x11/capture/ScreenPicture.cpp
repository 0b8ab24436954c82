#include "desktop/x11/capture/ScreenPicture.h"

#include "desktop/threads/MonotonicTime.h"
#include "desktop/x11/X11Scale.h"
#include "desktop/x11/capture/CaptureArea.h"
#include "desktop/x11/capture/DisplayContent.h"
#include "desktop/x11/capture/SavedPixels.h"
#include "desktop/x11/capture/ServerFeatures.h"
#include "desktop/x11/capture/WindowsContent.h"
#include "platform/PlatformError.h"

#include <utility>

namespace zivra::desktop {

namespace {

QRect areaToCapture(const XcbConnection &connection, const ContentFilter &filter,
                    const CaptureConfiguration &configuration)
{
    if (const QString missing = missingServerFeatures(connection); !missing.isEmpty()) {
        throw PlatformError(missing);
    }
    const auto area = captureArea(connection, filter.displayID, configuration.sourceRect);
    if (!area) {
        throw PlatformError(QStringLiteral("The display to be recorded is not connected."));
    }
    return *area;
}

std::unique_ptr<PictureContent> makeContent(const XcbConnection &connection, QRect area,
                                            const ContentFilter &filter)
{
    if (filter.kind == ContentFilter::Kind::DisplayIncludingWindows) {
        return std::make_unique<WindowsContent>(connection, area, filter.windowIDs);
    }
    return std::make_unique<DisplayContent>(connection, area, filter);
}

} // namespace

ScreenPicture::ScreenPicture(const QByteArray &displayName, const ContentFilter &filter,
                             const CaptureConfiguration &configuration)
    : m_connection(displayName),
      m_displayID(filter.displayID),
      m_area(areaToCapture(m_connection, filter, configuration)),
      m_events(m_connection),
      m_image(m_connection, m_area.size()),
      m_converter(m_area.size(), configuration.outputSize),
      m_pool(configuration.outputSize, configuration.queueDepth),
      m_unread(m_image.rect())
{
    ServerEvents::select(m_connection, configuration.showsCursor, configuration.showsMouseClicks);
    m_content = makeContent(m_connection, m_area, filter);
    if (configuration.showsCursor) {
        m_cursor.emplace(m_connection);
    }
    if (configuration.showsMouseClicks) {
        m_clicks.emplace(pixelsPerPoint(m_connection));
    }
}

void ScreenPicture::noteEvents()
{
    while (const auto event = m_connection.nextEvent()) {
        const ServerEvents::Kind kind = m_events.kind(*event);
        m_content->note(kind, *event);
        if (m_cursor) {
            m_cursor->note(kind);
        }
        if (m_clicks && kind == ServerEvents::Kind::Press) {
            notePress();
        }
        m_mustCheckDisplay |= kind == ServerEvents::Kind::Displays;
    }
    if (std::exchange(m_mustCheckDisplay, false)) {
        checkDisplay();
    }
    if (!m_connection.isAlive()) {
        throw PlatformError(QStringLiteral("The connection to the X server was lost."));
    }
}

void ScreenPicture::checkDisplay()
{
    if (!captureArea(m_connection, m_displayID, std::nullopt) && m_connection.isAlive()) {
        throw PlatformError(QStringLiteral("The display being recorded was disconnected."));
    }
}

void ScreenPicture::notePress()
{
    const auto pointer = m_connection.reply(xcb_query_pointer_reply,
                                            xcb_query_pointer(m_connection.get(), m_connection.root()));
    if (pointer) {
        m_clicks->press({pointer->root_x, pointer->root_y}, monotonicTime());
    }
}

bool ScreenPicture::mayHaveChanged() const
{
    if (m_content->isHeld()) {
        return m_content->mayHaveChanged();
    }
    return !m_unread.isEmpty() || m_content->mayHaveChanged() || (m_cursor && m_cursor->mayHaveChanged()) ||
           (m_clicks && m_clicks->mayHaveChanged());
}

std::optional<ScreenPicture::Frame> ScreenPicture::takeFrame(bool evenIfUnchanged)
{
    m_unread += takeChanges();
    if (m_content->isHeld()) {
        return evenIfUnchanged ? lastFrameAgain() : std::nullopt;
    }
    if (m_unread.isEmpty() && !evenIfUnchanged) {
        return std::nullopt;
    }
    auto buffer = takeBuffer();
    if (!buffer) {
        ++m_droppedFrames;
        return std::nullopt;
    }
    if (!read(m_unread)) {
        static_cast<void>(m_pool.wrap(std::move(buffer)));
        return std::nullopt;
    }
    const MediaTime time = monotonicTime();
    const QRegion changed = std::exchange(m_unread, QRegion());
    convert(changed, *buffer);
    const auto frame = m_pool.wrap(std::move(buffer));
    frame->number = ++m_frames;
    if (frame->number > 1) {
        frame->changed = m_converter.outputRects(changed);
    }
    m_last = frame;
    return Frame{frame, time};
}

std::unique_ptr<FrameBuffer> ScreenPicture::takeBuffer()
{
    auto buffer = m_pool.take();
    if (!buffer) {
        m_last.reset();
        buffer = m_pool.take();
    }
    return buffer;
}

std::optional<ScreenPicture::Frame> ScreenPicture::lastFrameAgain()
{
    if (!m_last) {
        return std::nullopt;
    }
    auto again = std::make_shared<VideoFrame>(*m_last);
    again->number = ++m_frames;
    again->changed.emplace();
    return Frame{again, monotonicTime()};
}

QRegion ScreenPicture::takeChanges()
{
    QRegion changed = m_content->takeChanges();
    if (m_cursor) {
        changed += m_cursor->update(m_content->origin());
    }
    if (m_clicks) {
        changed += m_clicks->update(m_content->origin(), monotonicTime());
    }
    return changed & m_image.rect();
}

/// `changed` grows by what changes meanwhile, where that has to be read at once.
bool ScreenPicture::read(QRegion &changed)
{
    bool isRead = m_content->read(m_image, changed);
    noteEvents();
    while (isRead && m_content->mustReadAgain()) {
        changed += takeChanges();
        isRead = m_content->read(m_image, changed);
        noteEvents();
    }
    return isRead && !m_content->isHeld();
}

void ScreenPicture::convert(const QRegion &changed, FrameBuffer &buffer)
{
    QRegion covered = m_cursor ? QRegion(m_cursor->bounds()) : QRegion();
    covered += m_clicks ? m_clicks->bounds() : QRegion();
    const SavedPixels beneath(m_image, covered);
    if (m_clicks) {
        m_clicks->draw(m_image);
    }
    if (m_cursor) {
        m_cursor->draw(m_image);
    }
    m_converter.convert(m_image, changed, buffer);
}

} // namespace zivra::desktop
