#include "platform/DetachedProcessLauncher.h"
#include "platform/DisplayGuard.h"
#include "tray/TrayCompanion.h"

#include <QApplication>
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
  if (!QSystemTrayIcon::isSystemTrayAvailable()) {
    std::fputs("dbsweep-tray: this desktop has no system tray, so the companion has nowhere to live.\n"
               "Start dbsweep directly instead.\n",
               stderr);
    return 1;
  }
  DetachedProcessLauncher launcher;
  TrayCompanion tray(launcher, QApplication::applicationDirPath());
  tray.show();
  return QApplication::exec();
}
