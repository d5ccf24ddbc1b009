#include "sqlconsole/ConsoleProgram.h"

#include "db/OraError.h"
#include "db/OraSession.h"
#include "db/local/LocalEngine.h"
#include "db/script/ScriptReader.h"
#include "platform/Terminal.h"
#include "sqlconsole/ConsoleOptions.h"
#include "sqlconsole/ConsoleRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

int createInstance(const ConsoleOptions& options, const DbEnvironment& env, QTextStream& out, QTextStream& err) {
  std::optional<QString> password = options.systemPassword;
  if (!password) {
    password = Terminal::readSecret(QStringLiteral("Password for SYSTEM: "));
    if (password && Terminal::stdinIsTerminal() &&
        Terminal::readSecret(QStringLiteral("Password for SYSTEM again: ")) != password) {
      err << "dbsweep-sql: the two passwords differ; no instance created\n";
      return 1;
    }
  }
  if (!password || password->isEmpty()) {
    err << "dbsweep-sql: the SYSTEM user needs a password; no instance created\n";
    return 1;
  }
  const QString folder = LocalEngine::folderFor(options.instance.mid(6), env);
  try {
    // local:NAME lives under the data folder, which a fresh account does not have yet.
    QDir().mkpath(QFileInfo(folder).absolutePath());
    LocalEngine::createInstance(folder, *password);
  } catch (const OraError& e) {
    err << e.message() << '\n';
    return 1;
  }
  out << "Instance created in " << QDir::toNativeSeparators(folder) << ".\n";
  return 0;
}

std::optional<QString> readScript(const QString& name, QTextStream& err) {
  QString path = name;
  // SQL*Plus's @name finds name.sql.
  if (!QFileInfo::exists(path) && QFileInfo(path).suffix().isEmpty())
    path += QStringLiteral(".sql");
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    err << "dbsweep-sql: cannot open " << name << ": " << file.errorString() << '\n';
    return std::nullopt;
  }
  return QString::fromUtf8(file.readAll());
}

int runStatements(const ConsoleOptions& options, const DbEnvironment& env, QTextStream& out, QTextStream& err) {
  std::optional<QString> script;
  if (!options.script.isEmpty()) {
    script = readScript(options.script, err);
    if (!script)
      return 1;
  }
  std::optional<QString> password = options.password;
  if (!password)
    password = Terminal::readSecret(QStringLiteral("Enter password: "));
  if (!password) {
    err << "dbsweep-sql: no password given\n";
    return 1;
  }

  OraSession session(env);
  std::shared_ptr<OraDatabase> database;
  try {
    database = session.OpenDatabase(options.host, options.user + u'/' + *password, 0);
  } catch (const OraError& e) {
    err << e.message() << '\n';
    return 1;
  }

  const bool interactive = !script && Terminal::stdinIsTerminal();
  ConsoleRunner::Options runOptions;
  runOptions.format = options.csv ? ResultPrinter::Format::Csv : ResultPrinter::Format::Text;
  runOptions.continueOnError = options.continueOnError;
  runOptions.lineNumbers = !interactive;
  ConsoleRunner runner(session, *database, out, err, runOptions);
  if (!runner.start())
    return runner.finish();
  if (interactive)
    out << "Connected.\n";

  ScriptReader reader;
  const auto runQueued = [&reader, &runner] {
    for (const ScriptItem& item : reader.takeItems()) {
      if (!runner.run(item))
        return false;
    }
    return true;
  };
  bool goOn = true;
  if (script) {
    for (const QStringView line : QStringView(*script).split(u'\n')) {
      reader.addLine(line);
      if (!(goOn = runQueued()) || reader.stopped())
        break;
    }
  } else {
    while (goOn && !reader.stopped()) {
      if (interactive) {
        out << (reader.inStatement() ? QStringLiteral("%1  ").arg(reader.nextStatementLine(), 3)
                                     : QStringLiteral("\nSQL> "));
        out.flush();
      }
      const std::optional<QString> line = Terminal::readLine();
      if (!line)
        break;
      reader.addLine(*line);
      goOn = runQueued();
    }
  }
  if (goOn) {
    reader.finish();
    runQueued();
  }
  return runner.finish();
}

} // namespace

int ConsoleProgram::run(const QStringList& arguments, const QProcessEnvironment& environment,
                        const QString& programFolder, QTextStream& out, QTextStream& err) {
  const ConsoleOptions options = ConsoleOptions::parse(arguments);
  int status = 0;
  if (!options.error.isEmpty()) {
    err << "dbsweep-sql: " << options.error << "\nTry 'dbsweep-sql --help' for more information.\n";
    status = 2;
  } else if (options.mode == ConsoleOptions::Mode::Help) {
    out << ConsoleOptions::usage();
  } else {
    DbEnvironment env = DbEnvironment::from(environment);
    env.programFolder = programFolder;
    status = options.mode == ConsoleOptions::Mode::CreateInstance ? createInstance(options, env, out, err)
                                                                  : runStatements(options, env, out, err);
  }
  out.flush();
  err.flush();
  return status;
}
