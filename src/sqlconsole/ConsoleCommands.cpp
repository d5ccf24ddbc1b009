#include "sqlconsole/ConsoleCommands.h"

#include "db/OraError.h"
#include "platform/Terminal.h"
#include "sqlconsole/ConsoleConnection.h"
#include "sqlconsole/ConsoleOutput.h"
#include "sqlconsole/ConsoleRunner.h"
#include "sqlconsole/Describe.h"
#include "sqlconsole/Logon.h"

namespace {

using ConsoleCommands::abbreviates;
using L = QLatin1StringView;

void set(const QStringList& words, ConsoleRunner& runner) {
  for (const QString& error : runner.settings().set(words.mid(1)))
    runner.commandError(error);
}

void clear(const QStringList& words, ConsoleRunner& runner) {
  const QString what = words.value(1).toUpper();
  if (abbreviates(what, L("COLUMNS"), 3)) {
    runner.columns().clear();
    runner.output().printLine(QStringLiteral("columns cleared"));
  } else {
    runner.commandError(QStringLiteral("SP2-0158: unknown CLEAR option \"%1\"").arg(words.value(1)));
  }
}

void spool(const QStringList& words, ConsoleRunner& runner) {
  ConsoleOutput& output = runner.output();
  const QString name = words.value(1);
  if (name.isEmpty()) {
    const QString file = output.spoolFile();
    output.printLine(file.isEmpty() ? QStringLiteral("not spooling currently")
                                    : QStringLiteral("currently spooling to %1").arg(file));
  } else if (name.compare(u"off", Qt::CaseInsensitive) == 0) {
    if (!output.spoolOff())
      output.printLine(QStringLiteral("not spooling currently"));
  } else {
    const QString mode = words.value(2).toUpper();
    if (!mode.isEmpty() && !abbreviates(mode, L("APPEND"), 3) && !abbreviates(mode, L("REPLACE"), 3) &&
        !abbreviates(mode, L("CREATE"), 3)) {
      runner.commandError(QStringLiteral("SP2-0768: Illegal SPOOL command"));
      return;
    }
    if (const QString error = output.spool(name, abbreviates(mode, L("APPEND"), 3)); !error.isEmpty())
      runner.commandError(error);
  }
}

void describe(const QStringList& words, ConsoleRunner& runner) {
  if (words.size() < 2) {
    runner.commandError(QStringLiteral("SP2-0565: Illegal identifier."));
    return;
  }
  if (!runner.connection().connected()) {
    runner.commandError(QStringLiteral("SP2-0640: Not connected"));
    return;
  }
  try {
    runner.output().print(Describe::columns(runner.connection().database(), words[1], runner.connection().user()));
  } catch (const OraError& e) {
    runner.commandError(QStringLiteral("ERROR:\n") + e.message());
  }
}

void show(const QStringList& words, ConsoleRunner& runner) {
  if (words.value(1).compare(u"user", Qt::CaseInsensitive) == 0)
    runner.output().printLine(QStringLiteral("USER is \"%1\"").arg(runner.connection().user()));
  else
    runner.commandError(QStringLiteral("SP2-0158: unknown SHOW option \"%1\"").arg(words.value(1)));
}

void define(QStringView arguments, ConsoleRunner& runner) {
  QString error;
  const QString shown = runner.substitution().define(arguments, error);
  if (!error.isEmpty())
    runner.commandError(error);
  else if (!shown.isEmpty())
    runner.output().printLine(shown);
}

void connect(QString text, ConsoleRunner& runner) {
  ConsoleConnection& connection = runner.connection();
  if (text.isEmpty())
    text = Terminal::ask(QStringLiteral("Enter user-name: ")).value_or(QString());
  Logon logon = Logon::parse(text);
  if (logon.host.isEmpty())
    logon.host = connection.host();
  if (logon.error.isEmpty() && logon.host.isEmpty())
    logon.error = QStringLiteral("missing @HOST in %1").arg(logon.user);
  if (!logon.error.isEmpty()) {
    runner.commandError(QStringLiteral("SP2-0306: Invalid option: ") + logon.error);
    return;
  }
  if (!logon.password)
    logon.password = Terminal::readSecret(QStringLiteral("Enter password: "));
  try {
    // As SQL*Plus does, the old logon's work is committed before the new one starts.
    connection.disconnect(true);
    connection.connect(logon.user, logon.password.value_or(QString()), logon.host);
    runner.output().printLine(QStringLiteral("Connected."));
  } catch (const OraError& e) {
    runner.commandError(
        QStringLiteral("ERROR:\n%1\n\nWarning: You are no longer connected to ORACLE.").arg(e.message()));
  }
}

void disconnect(ConsoleRunner& runner) {
  ConsoleConnection& connection = runner.connection();
  if (!connection.connected())
    return;
  try {
    const QString version = connection.database().RDBMSVersion();
    connection.disconnect(true);
    runner.output().printLine(QStringLiteral("Disconnected from ") + version);
  } catch (const OraError& e) {
    runner.commandError(e.message());
  }
}

// The text after the command word.
QStringView rest(QStringView line) {
  line = line.trimmed();
  qsizetype i = 0;
  while (i < line.size() && !line[i].isSpace())
    ++i;
  return line.mid(i).trimmed();
}

} // namespace

bool ConsoleCommands::abbreviates(const QString& word, QLatin1StringView command, qsizetype shortest) {
  return word.size() >= shortest && word.size() <= command.size() && command.startsWith(word, Qt::CaseInsensitive);
}

QStringList ConsoleCommands::words(QStringView line) {
  QStringList words;
  qsizetype i = 0;
  while (i < line.size()) {
    while (i < line.size() && line[i].isSpace())
      ++i;
    if (i >= line.size())
      break;
    QString word;
    while (i < line.size() && !line[i].isSpace()) {
      if (line[i] == u'\'' || line[i] == u'"') {
        const qsizetype close = line.indexOf(line[i], i + 1);
        const qsizetype end = close < 0 ? line.size() : close;
        word += line.mid(i + 1, end - i - 1);
        i = end + 1;
      } else {
        word += line[i++];
      }
    }
    words += word;
  }
  return words;
}

bool ConsoleCommands::run(QStringView line, ConsoleRunner& runner) {
  // SQL*Plus commands may carry a stray ';' ("spool off;").
  QStringView bare = line.trimmed();
  while (bare.endsWith(u';'))
    bare.chop(1);
  const QStringList words = ConsoleCommands::words(bare);
  const QString command = words.value(0).toUpper();
  if (command.isEmpty())
    return false;
  if (command == u"SET") {
    // SET TRANSACTION, SET ROLE and SET CONSTRAINTS are SQL.
    static const QStringList sql{QStringLiteral("TRANSACTION"), QStringLiteral("ROLE"), QStringLiteral("CONSTRAINT"),
                                 QStringLiteral("CONSTRAINTS")};
    if (sql.contains(words.value(1).toUpper()))
      return false;
    set(words, runner);
  } else if (abbreviates(command, L("COLUMN"), 3)) {
    if (const QString error = runner.columns().define(words.mid(1)); !error.isEmpty())
      runner.commandError(error);
  } else if (abbreviates(command, L("CLEAR"), 2)) {
    clear(words, runner);
  } else if (abbreviates(command, L("SPOOL"), 3)) {
    spool(words, runner);
  } else if (abbreviates(command, L("DESCRIBE"), 4)) {
    describe(words, runner);
  } else if (abbreviates(command, L("SHOW"), 3)) {
    show(words, runner);
  } else if (abbreviates(command, L("DEFINE"), 3)) {
    define(rest(bare), runner);
  } else if (abbreviates(command, L("UNDEFINE"), 5)) {
    runner.substitution().undefine(words.mid(1));
  } else if (abbreviates(command, L("CONNECT"), 4)) {
    connect(words.value(1), runner);
  } else if (abbreviates(command, L("DISCONNECT"), 4)) {
    disconnect(runner);
  } else {
    return false;
  }
  return true;
}
