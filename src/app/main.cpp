#include "app/FDBSWEEP.h"
#include "common/BDBSWEEP.h"
#include "common/JVK_Cmn.h"
#include "launcher/LaunchCommand.h"
#include "platform/DetachedProcessLauncher.h"
#include "platform/DisplayGuard.h"
#include "platform/PlatformRegistry.h"
#include "platform/SystemClock.h"
#include "platform/SystemInfo.h"
#include "services/AppEnvironment.h"
#include "services/Services.h"
#include "widgets/GuardedApplication.h"
#include "widgets/QtDesktopServices.h"
#include "widgets/QtMessageBoxes.h"

#include <QFile>

#include <cstdio>
#include <optional>

int main(int argc, char* argv[]) {
  std::optional<DisplayGuard> displayGuard(std::in_place, "dbsweep");
  GuardedApplication app(argc, argv);
  displayGuard.reset();
  QApplication::setApplicationName(QStringLiteral("DBSWEEP"));

  const auto env = QProcessEnvironment::systemEnvironment();
  const PlatformRegistry::Folders folders = PlatformRegistry::foldersFrom(env);
  PlatformRegistry registry(folders, env);
  QtMessageBoxes boxes;
  app.setMessageBoxes(&boxes);
  SystemClock clock;
  DetachedProcessLauncher launcher;
  QtFileDialogs fileDialogs;
  QtPrintDialog printDialog;
  DesktopUrlOpener urlOpener;
  DbEnvironment dbEnv = DbEnvironment::from(env);
  dbEnv.programFolder = programFolder();
  dbEnv.settingsFolder = folders.config;
  const AppEnvironment appEnv{env.value(QStringLiteral("TNS_ADMIN")), dbEnv};
  Services services{boxes, clock, launcher, fileDialogs, printDialog, urlOpener, appEnv};

  BDBSWEEP state;
  state.gRegistry = std::make_unique<clsREG>(registry, boxes);
  QFile input;
  input.open(stdin, QIODevice::ReadOnly);
  state.gCommandArgs = ProgramCommandArgs(QApplication::arguments().mid(1), input);
  state.gWindowsUser = GetWindowsUserName();

  FDBSWEEP window(state, services);
  window.load();
  window.show();
  return QApplication::exec();
}
