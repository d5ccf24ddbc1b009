#include "platform/DateTimeSettings.h"

#include "services/ProcessLauncher.h"

#include <QStringList>

bool OpenDateTimeSettings(ProcessLauncher& launcher) {
  // GNOME, KDE Plasma, Xfce, then the generic time settings of other desktops.
  const QList<QStringList> tools = {
      {QStringLiteral("gnome-control-center"), QStringLiteral("datetime")},
      {QStringLiteral("systemsettings"), QStringLiteral("kcm_clock")},
      {QStringLiteral("xfce4-datetime-settings")},
      {QStringLiteral("time-admin")},
  };
  for (const QStringList& tool : tools)
    if (launcher.start(tool.first(), tool.mid(1), ProcessLauncher::WindowState::Normal))
      return true;
  return false;
}
