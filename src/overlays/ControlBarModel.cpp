#include "overlays/ControlBarModel.h"

#include "settings/Duration.h"

namespace zivra {

ControlBarModel::ControlBarModel(RecordingControls &controls, DrawingModel &drawing)
    : m_controls(controls),
      m_drawing(drawing),
      m_time(formatDuration(controls.elapsed()))
{
    for (const auto signal : {&RecordingControls::phaseChanged, &RecordingControls::cameraHiddenChanged,
                              &RecordingControls::modeChanged, &RecordingControls::shortcutsChanged}) {
        connect(&m_controls, signal, this, &ControlBarModel::changed);
    }
    connect(&m_controls, &RecordingControls::elapsedChanged, this, &ControlBarModel::readTime);
}

QString ControlBarModel::finishHelp() const
{
    return tip(QStringLiteral("Finish Recording"), ShortcutAction::StartStop);
}

QString ControlBarModel::pauseHelp() const
{
    return tip(isPaused() ? QStringLiteral("Resume Recording") : QStringLiteral("Pause"),
               ShortcutAction::PauseResume);
}

QString ControlBarModel::restartHelp() const
{
    return tip(QStringLiteral("Restart"), ShortcutAction::Restart);
}

QString ControlBarModel::cancelHelp() const
{
    return tip(QStringLiteral("Cancel"), ShortcutAction::Cancel);
}

QString ControlBarModel::tip(const QString &title, ShortcutAction action) const
{
    const auto shortcut = m_controls.shortcut(action);
    const QString keys = shortcut ? shortcut->display() : QString();
    return keys.isEmpty() ? title : QStringLiteral("%1 (%2)").arg(title, keys);
}

void ControlBarModel::readTime()
{
    const QString time = formatDuration(m_controls.elapsed());
    if (time != m_time) {
        m_time = time;
        Q_EMIT timeChanged();
    }
}

} // namespace zivra
