#include "app/BDBSWEEP.h"
#include "app/FDBSWEEP.h"
#include "app/JVK_Cmn.h"
#include "platform/DetachedProcessLauncher.h"
#include "platform/PlatformRegistry.h"
#include "platform/SystemClock.h"
#include "platform/SystemInfo.h"
#include "services/AppEnvironment.h"
#include "services/Services.h"
#include "widgets/GuardedApplication.h"
#include "widgets/QtDesktopServices.h"
#include "widgets/QtMessageBoxes.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int NoDisplayExit = 2;

[[noreturn]] void noDisplay(const char* why) {
  std::fprintf(stderr,
               "dbsweep: no display found (%s).\n"
               "Start it from a desktop session, or under a virtual screen:\n"
               "  Xvfb :99 & DISPLAY=:99 dbsweep\n",
               why);
  std::exit(NoDisplayExit);
}

// Qt ends the process with an abort when no platform plugin can reach a display (a DISPLAY that
// names no running X server, say); while the application object is made, such a fatal message
// becomes the same clear message and exit code as no display at all.
void fatalWhileStarting(QtMsgType type, const QMessageLogContext&, const QString& message) {
  if (type == QtFatalMsg)
    noDisplay(qPrintable(message.section(u'\n', 0, 0)));
  std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

int main(int argc, char* argv[]) {
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    noDisplay("DISPLAY and WAYLAND_DISPLAY are not set");
  const QtMessageHandler previous = qInstallMessageHandler(fatalWhileStarting);
  GuardedApplication app(argc, argv);
  qInstallMessageHandler(previous);
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
  const AppEnvironment appEnv{programFolder(), folders.config, env.value(QStringLiteral("TNS_ADMIN")),
                              DbEnvironment::from(env)};
  Services services{boxes, clock, launcher, fileDialogs, printDialog, urlOpener, appEnv};

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
