#pragma once

#include "overlays/OverlayPanel.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

namespace zivra {

/// Shows what a control does while the mouse rests on it. There is one for all views, which know it as
/// `tooltips`. Main thread only.
class Tooltips : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString text READ text NOTIFY textChanged)

public:
    /// Made before the first view that uses it is loaded.
    explicit Tooltips(const PanelMaker &maker);

    [[nodiscard]] const QString &text() const { return m_text; }

    /// The mouse is on this item. The text appears beside its `edge`, Qt::RightEdge or Qt::BottomEdge, after
    /// a while; at once when another one has just been shown.
    Q_INVOKABLE void offer(QQuickItem *item, const QString &text, int edge);
    /// The item's text is another one now.
    Q_INVOKABLE void change(QQuickItem *item, const QString &text);
    Q_INVOKABLE void withdraw(QQuickItem *item);

Q_SIGNALS:
    void textChanged();

private:
    void setText(const QString &text);
    void show();
    void place();

    PanelMaker m_maker;
    std::optional<OverlayPanel> m_panel; ///< from the first one shown on
    QPointer<QQuickItem> m_item;
    QString m_text;
    int m_edge = Qt::BottomEdge;
    QTimer m_delay;
    QTimer m_afterglow; ///< runs while the next one comes without delay
};

} // namespace zivra
