#include "desktop/session/PrivacySettings.h"

namespace zivra::desktop {

namespace {

/// One desktop's pages; the programs and page names are those that its own menus start.
struct SettingsPages {
    QString desktop; ///< as XDG_CURRENT_DESKTOP names it
    QList<QStringList> screenCapture;
    QList<QStringList> camera;
    QList<QStringList> microphone;
};

QList<QStringList> commands(std::initializer_list<const char *> lines)
{
    QList<QStringList> result;
    for (const auto *line : lines) {
        result.append(QString::fromLatin1(line).split(QLatin1Char(' ')));
    }
    return result;
}

QList<SettingsPages> desktopPages()
{
    return {
        {QStringLiteral("GNOME"), commands({"gnome-control-center applications"}),
         commands({"gnome-control-center camera"}),
         commands({"gnome-control-center microphone", "gnome-control-center sound"})},
        {QStringLiteral("KDE"), commands({"systemsettings", "systemsettings5"}),
         commands({"systemsettings kcm_camera", "systemsettings5"}),
         commands({"systemsettings kcm_pulseaudio", "systemsettings5 kcm_pulseaudio",
                   "kcmshell6 kcm_pulseaudio", "kcmshell5 kcm_pulseaudio"})},
        {QStringLiteral("X-Cinnamon"), commands({"cinnamon-settings privacy"}),
         commands({"cinnamon-settings privacy"}), commands({"cinnamon-settings sound"})},
        {QStringLiteral("MATE"), commands({"mate-control-center"}), commands({"mate-control-center"}),
         commands({"mate-volume-control"})},
        {QStringLiteral("XFCE"), commands({"xfce4-settings-manager"}), commands({"xfce4-settings-manager"}),
         commands({"pavucontrol --tab=4", "xfce4-settings-manager"})},
        {QStringLiteral("LXQt"), commands({"lxqt-config"}), commands({"lxqt-config"}),
         commands({"pavucontrol-qt --tab=4", "lxqt-config"})},
    };
}

/// For a desktop that is not among those, or has other programs installed than its own.
SettingsPages anyPages()
{
    return {{},
            commands({"gnome-control-center applications"}),
            commands({"gnome-control-center camera"}),
            commands({"pavucontrol --tab=4", "pavucontrol-qt --tab=4", "gnome-control-center microphone"})};
}

QList<QStringList> pageCommands(const SettingsPages &pages, const QString &pane)
{
    if (pane == QStringLiteral("Privacy_ScreenCapture")) {
        return pages.screenCapture;
    }
    if (pane == QStringLiteral("Privacy_Camera")) {
        return pages.camera;
    }
    return pane == QStringLiteral("Privacy_Microphone") ? pages.microphone : QList<QStringList>();
}

} // namespace

QList<QStringList> privacySettingsCommands(const QString &pane, const QStringList &desktops)
{
    QList<QStringList> result;
    for (const auto &pages : desktopPages()) {
        if (desktops.contains(pages.desktop)) {
            result += pageCommands(pages, pane);
        }
    }
    return result + pageCommands(anyPages(), pane);
}

} // namespace zivra::desktop
