#include "DesktopPage.h"

#include "Scene.h"
#include "Words.h"

#include <QLinearGradient>
#include <QPainter>

namespace zivra::bench {

namespace {

constexpr int kTitleHeight = 28;
constexpr int kPanelHeight = 36;

void drawWindow(QPainter &painter, QRect place, const QString &title, QColor paper)
{
    painter.fillRect(place.adjusted(-1, -1, 1, 1), QColor(40, 44, 52));
    QLinearGradient bar(place.topLeft(), place.topLeft() + QPoint(0, kTitleHeight));
    bar.setColorAt(0, QColor(90, 96, 110));
    bar.setColorAt(1, QColor(60, 64, 74));
    painter.fillRect(QRect(place.topLeft(), QSize(place.width(), kTitleHeight)), bar);
    painter.fillRect(place.adjusted(0, kTitleHeight, 0, 0), paper);
    painter.setPen(Qt::white);
    painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    painter.drawText(place.topLeft() + QPoint(12, 19), title);
    for (int button = 0; button < 3; ++button) {
        painter.setBrush(QColor::fromHsv(40 + 60 * button, 180, 220));
        painter.drawEllipse(place.topRight() + QPoint(-22 - 22 * button, 8), 5, 5);
    }
}

void drawLines(QPainter &painter, QRect place, const QFont &font, QColor ink, unsigned seed)
{
    Words words(seed);
    painter.setFont(font);
    painter.setPen(ink);
    const int pitch = QFontMetrics(font).lineSpacing();
    painter.setClipRect(place);
    for (int y = place.top() + pitch; y < place.bottom(); y += pitch) {
        painter.drawText(place.left(), y, words.sentence());
    }
    painter.setClipping(false);
}

void drawPanel(QPainter &painter)
{
    const QRect panel(0, kScreenSize.height() - kPanelHeight, kScreenSize.width(), kPanelHeight);
    painter.fillRect(panel, QColor(32, 34, 40));
    for (int icon = 0; icon < 12; ++icon) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor::fromHsv(30 * icon, 150, 210));
        painter.drawRoundedRect(12 + 44 * icon, panel.top() + 6, 24, 24, 5, 5);
    }
    painter.setPen(Qt::white);
    painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 11));
    painter.drawText(panel.adjusted(0, 0, -16, 0), Qt::AlignRight | Qt::AlignVCenter,
                     QStringLiteral("Tue 14:05"));
}

} // namespace

QImage desktopPage()
{
    QImage image(kScreenSize, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, kScreenSize.width(), kScreenSize.height());
    sky.setColorAt(0, QColor(28, 60, 110));
    sky.setColorAt(0.6, QColor(110, 90, 140));
    sky.setColorAt(1, QColor(210, 130, 100));
    painter.fillRect(image.rect(), sky);

    const QFont mono(QStringLiteral("DejaVu Sans Mono"), 10);
    const QFont sans(QStringLiteral("DejaVu Sans"), 11);
    const QRect terminal(60, 520, 760, 480);
    drawWindow(painter, terminal, QStringLiteral("Terminal"), QColor(24, 26, 30));
    drawLines(painter, terminal.adjusted(10, kTitleHeight + 4, -10, -6), mono, QColor(170, 220, 170), 3);
    const QRect reader(700, 60, 1140, 860);
    drawWindow(painter, reader, QStringLiteral("Letters from the coast"), QColor(250, 249, 245));
    painter.fillRect(QRect(reader.left(), reader.top() + kTitleHeight, 180, reader.height() - kTitleHeight),
                     QColor(228, 230, 236));
    drawLines(painter, reader.adjusted(20, kTitleHeight + 10, 180 - reader.width() - 10, -300), sans,
              QColor(60, 70, 90), 4);
    drawLines(painter, reader.adjusted(210, kTitleHeight + 10, -20, -10), sans, Qt::black, 5);
    drawPanel(painter);
    return image;
}

QImage textColumn(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    const QFont heading(QStringLiteral("DejaVu Sans"), 18, QFont::Bold);
    const QFont body(QStringLiteral("DejaVu Sans"), 12);
    const int margin = 40;
    Words words(9);
    for (int y = margin; y < size.height() - margin;) {
        painter.setPen(QColor(30, 60, 120));
        painter.setFont(heading);
        painter.drawText(margin, y + 24, words.sentence());
        y += 44;
        painter.setPen(Qt::black);
        painter.setFont(body);
        QRect used;
        painter.drawText(QRect(margin, y, size.width() - 2 * margin, size.height() - margin - y),
                         Qt::AlignLeft | Qt::TextWordWrap, words.paragraph(12), &used);
        y = used.bottom() + 28;
    }
    return image;
}

} // namespace zivra::bench
