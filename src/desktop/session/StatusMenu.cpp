#include "desktop/session/StatusMenu.h"

#include <QKeyEvent>

#include <algorithm>

namespace zivra::desktop {

StatusMenu::StatusMenu()
{
    connect(this, &QMenu::aboutToShow, this, &StatusMenu::fill);
}

void StatusMenu::keyPressEvent(QKeyEvent *event)
{
    // An open menu has the keyboard to itself, so that Qt looks for no shortcuts.
    const auto all = actions();
    const auto pressed = std::ranges::find(all, QKeySequence(event->keyCombination()), &QAction::shortcut);
    if (pressed == all.end()) {
        QMenu::keyPressEvent(event);
        return;
    }
    close();
    (*pressed)->trigger();
}

void StatusMenu::fill()
{
    clear();
    if (!m_provider) {
        return;
    }
    for (const auto &item : m_provider()) {
        addItem(item);
    }
}

void StatusMenu::addItem(const MenuItem &item)
{
    if (item.title.isEmpty()) {
        addSeparator();
        return;
    }
    auto *action = addAction(item.title);
    if (!item.keyEquivalent.isEmpty()) {
        action->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + item.keyEquivalent.toUpper()));
        action->setShortcutVisibleInContextMenu(true);
    }
    if (item.action) {
        // Queued: the action may change or end what the menu belongs to.
        connect(action, &QAction::triggered, this, item.action, Qt::QueuedConnection);
    }
}

} // namespace zivra::desktop
