#pragma once

#include "common/CommandArgs.h"
#include "common/Logon.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

class QIODevice;
struct LauncherEntry;

// What starting a program takes: the program, its arguments one by one (no shell comes
// between, so blanks and quotes in a password arrive as typed), and what it reads first on its
// standard input.
struct LaunchCommand {
  QString program;
  QStringList arguments;
  QByteArray standardInput;
};

// Whether an entry's button is shown: not for an empty caption, nor for a single NUL between
// blanks (what an emptied entry of older settings holds). Blanks alone are a caption.
bool LauncherEntryShown(const QString& caption);

// Entry's program with the connection in the entry's hand-over form:
//   0 none, 1 "U P H" (three arguments), 2 "U,P,H", 3 "U/P@H", 4 "/u=U/P@H"; any other form none.
LaunchCommand HandOverCommand(const LauncherEntry& entry, const Logon& logon);

// A second copy of this program in programFolder, logged on as logon. The password goes to its
// standard input, never onto its command line, where every user of the machine could read it.
LaunchCommand CloneCommand(const QString& programFolder, const Logon& logon);

// The option that makes the program read its password from standard input.
inline constexpr char PasswordOnInputOption[] = "--password-stdin";

// The logon words of the program's command line (without the program itself). A user types
// "USER PASS HOST", split at blanks as always; a clone's "--password-stdin USER HOST" takes the
// password as the first line of input, with every character kept but the line end.
CommandArgs ProgramCommandArgs(const QStringList& arguments, QIODevice& input);

class ProcessLauncher;
class clsREG;

// Starts launcher entry i (0 … 9) as the settings hold it now, with logon. A program that cannot
// start is not reported: the user sees that nothing came up.
void StartLauncherEntry(clsREG& registry, ProcessLauncher& launcher, int i, const Logon& logon);
// Starts a second copy of this program logged on as logon; failures are ignored likewise.
void StartClone(ProcessLauncher& launcher, const QString& programFolder, const Logon& logon);
