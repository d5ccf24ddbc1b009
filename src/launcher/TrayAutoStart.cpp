#include "launcher/TrayAutoStart.h"

#include "services/MessageBoxes.h"
#include "services/ProcessLauncher.h"
#include "settings/RegSetting.h"

namespace {
const QString RunValue = QStringLiteral("DBSWEEP");
}

QString TrayProgramPath(const QString& programFolder) { return programFolder + QStringLiteral("/dbsweep-tray"); }

void SetTrayAutoStart(const QString& mode, clsREG& registry, ProcessLauncher& launcher, MessageBoxes& boxes,
                      const QString& programFolder) {
  if (mode == u"ON" || mode == u"on") {
    const QString program = TrayProgramPath(programFolder);
    if (!launcher.start(program, {}, ProcessLauncher::WindowState::Minimized)) {
      boxes.show(QStringLiteral("常駐DBSWEEPが") + programFolder +
                     QStringLiteral("に見つからないため、常駐設定出来ません"),
                 QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Critical);
      return;
    }
    RegSetting(registry, QStringLiteral("W"), QStringLiteral("RUN"), RunValue, program);
  } else if (mode == u"OFF" || mode == u"off") {
    RegSetting(registry, QStringLiteral("D"), QStringLiteral("RUN"), RunValue, QString());
    boxes.show(QStringLiteral("自動常駐を解除しました。\r\n"
                              "常駐DBSWEEPが起動中の場合はシステムトレイのアイコン上で右クリックして下さい。"),
               QStringLiteral("DBSWEEP"));
  }
}

bool TrayAutoStartRegistered(clsREG& registry) {
  return RegSetting(registry, QStringLiteral("R"), QStringLiteral("RUN"), RunValue, QStringLiteral("NONE")) != u"NONE";
}
