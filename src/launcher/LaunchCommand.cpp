#include "launcher/LaunchCommand.h"

#include "common/JVK_Cmn.h"
#include "launcher/LauncherSettings.h"
#include "services/ProcessLauncher.h"

#include <QIODevice>

bool LauncherEntryShown(const QString& caption) {
  return !caption.isEmpty() && caption.trimmed() != QString(QChar(0));
}

LaunchCommand HandOverCommand(const LauncherEntry& entry, const Logon& logon) {
  const QString& u = logon.user;
  const QString& p = logon.password;
  const QString& h = logon.host;
  LaunchCommand command{entry.program, {}, {}};
  switch (entry.form) {
  case 1:
    command.arguments = {u, p, h};
    break;
  case 2:
    command.arguments = {u + u',' + p + u',' + h};
    break;
  case 3:
    command.arguments = {u + u'/' + p + u'@' + h};
    break;
  case 4:
    command.arguments = {QStringLiteral("/u=") + u + u'/' + p + u'@' + h};
    break;
  default:
    break;
  }
  return command;
}

LaunchCommand CloneCommand(const QString& programFolder, const Logon& logon) {
  return {programFolder + QStringLiteral("/dbsweep"),
          {QString::fromLatin1(PasswordOnInputOption), logon.user, logon.host},
          logon.password.toUtf8() + '\n'};
}

CommandArgs ProgramCommandArgs(const QStringList& arguments, QIODevice& input) {
  if (arguments.value(0) != QLatin1String(PasswordOnInputOption))
    return SplitCommandLine(arguments.join(u' '));
  QByteArray line = input.readLine();
  if (line.endsWith('\n'))
    line.chop(1);
  if (line.endsWith('\r'))
    line.chop(1);
  // The user and host come as their own words, so nothing in them is split again.
  return CommandArgs({arguments.value(1), QString::fromUtf8(line), arguments.value(2)});
}

namespace {

void launch(ProcessLauncher& launcher, const LaunchCommand& command) {
  if (!command.program.trimmed().isEmpty())
    launcher.start(command.program, command.arguments, ProcessLauncher::WindowState::Normal, command.standardInput);
}

} // namespace

void StartLauncherEntry(clsREG& registry, ProcessLauncher& launcher, int i, const Logon& logon) {
  launch(launcher, HandOverCommand(ReadLauncherEntry(registry, i), logon));
}

void StartClone(ProcessLauncher& launcher, const QString& programFolder, const Logon& logon) {
  launch(launcher, CloneCommand(programFolder, logon));
}
