#include "common/BDBSWEEP.h"
#include "platform/DetachedProcessLauncher.h"
#include "platform/DisplayGuard.h"
#include "platform/PlatformRegistry.h"
#include "tray/TrayCompanion.h"
#include "widgets/QtMessageBoxes.h"

#include <QApplication>
#include <QLockFile>
#include <QStandardPaths>
#include <QSystemTrayIcon>

#include <cstdio>
#include <optional>

int main(int argc, char* argv[]) {
  std::optional<DisplayGuard> displayGuard(std::in_place, "dbsweep-tray");
  QApplication app(argc, argv);
  displayGuard.reset();
  QApplication::setApplicationName(QStringLiteral("DBSWEEP_TRAY"));
  // The companion lives in the tray only: closing a window of it must not end it.
  QApplication::setQuitOnLastWindowClosed(false);
  // One companion per user: the runtime folder is the user's own, and a lock left by a
  // companion that died is taken over.
  QLockFile lock(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
                 QStringLiteral("/dbsweep-tray.lock"));
  if (!lock.tryLock(0)) {
    std::fputs("dbsweep-tray: the companion is already running for this user.\n", stderr);
    return 0;
  }
  if (!QSystemTrayIcon::isSystemTrayAvailable()) {
    std::fputs("dbsweep-tray: this desktop has no system tray, so the companion has nowhere to live.\n"
               "Start dbsweep directly instead.\n",
               stderr);
    return 1;
  }
  const auto env = QProcessEnvironment::systemEnvironment();
  PlatformRegistry registry(PlatformRegistry::foldersFrom(env), env);
  QtMessageBoxes boxes;
  clsREG settings(registry, boxes);
  DetachedProcessLauncher launcher;
  TrayCompanion tray(launcher, settings, QApplication::applicationDirPath());
  tray.show();
  return QApplication::exec();
}
