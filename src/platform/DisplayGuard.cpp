#include "platform/DisplayGuard.h"

#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace {

const char* guardedProgram = "dbsweep";
QtMessageHandler previousHandler = nullptr;

[[noreturn]] void noDisplay(const char* why) {
  std::fprintf(stderr,
               "%s: no display found (%s).\n"
               "Start it from a desktop session, or under a virtual screen:\n"
               "  Xvfb :99 & DISPLAY=:99 %s\n",
               guardedProgram, why, guardedProgram);
  std::exit(DisplayGuard::NoDisplayExit);
}

// Qt reports a platform plugin that reaches no display as a fatal message and then aborts.
void fatalMeansNoDisplay(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type == QtFatalMsg)
    noDisplay(qPrintable(message.section(u'\n', 0, 0)));
  if (previousHandler)
    previousHandler(type, context, message);
  else
    std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

DisplayGuard::DisplayGuard(const char* program) {
  guardedProgram = program;
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
      qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    noDisplay("DISPLAY and WAYLAND_DISPLAY are not set");
  previousHandler = qInstallMessageHandler(fatalMeansNoDisplay);
}

DisplayGuard::~DisplayGuard() { qInstallMessageHandler(previousHandler); }
