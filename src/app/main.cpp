#include "app/AppEnvironment.h"
#include "app/BDBSWEEP.h"
#include "app/FDBSWEEP.h"
#include "app/JVK_Cmn.h"
#include "app/Services.h"
#include "platform/Clock.h"
#include "platform/PlatformRegistry.h"
#include "platform/ProcessLauncher.h"
#include "platform/SystemInfo.h"
#include "widgets/QtMessageBoxes.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char* argv[]) {
  // Without a display Qt would abort with a terse message; say what is wrong instead.
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    std::fputs("dbsweep: no display found (DISPLAY and WAYLAND_DISPLAY are not set).\n"
               "Start it from a desktop session, or under a virtual screen:\n"
               "  Xvfb :99 & DISPLAY=:99 dbsweep\n",
               stderr);
    return 2;
  }
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("DBSWEEP"));

  const auto env = QProcessEnvironment::systemEnvironment();
  const PlatformRegistry::Folders folders = PlatformRegistry::foldersFrom(env);
  PlatformRegistry registry(folders, env);
  QtMessageBoxes boxes;
  SystemClock clock;
  DetachedProcessLauncher launcher;
  const AppEnvironment appEnv{programFolder(), folders.config, env.value(QStringLiteral("TNS_ADMIN")),
                              DbEnvironment::from(env)};
  Services services{boxes, clock, launcher, appEnv};

  BDBSWEEP state;
  state.gRegistry = std::make_unique<clsREG>(registry, boxes);
  // The words of the command line as one line, split the way the program always split it.
  state.gCommandArgs = SplitCommandLine(QApplication::arguments().mid(1).join(u' '));
  state.gWindowsUser = GetWindowsUserName();

  FDBSWEEP window(state, services);
  window.load();
  window.show();
  return QApplication::exec();
}
