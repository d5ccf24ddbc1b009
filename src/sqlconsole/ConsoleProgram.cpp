#include "sqlconsole/ConsoleProgram.h"

#include "db/OraError.h"
#include "db/local/LocalEngine.h"
#include "db/script/ScriptReader.h"
#include "platform/LineEditor.h"
#include "platform/Terminal.h"
#include "sqlconsole/ConsoleConnection.h"
#include "sqlconsole/ConsoleOptions.h"
#include "sqlconsole/ConsoleOutput.h"
#include "sqlconsole/ConsoleRunner.h"
#include "sqlconsole/ConsoleScript.h"

#include <QDir>
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

int runStatements(const ConsoleOptions& options, const DbEnvironment& env, QTextStream& out, QTextStream& err) {
  ConsoleOutput output(out, err);
  std::optional<QString> script;
  if (!options.script.isEmpty()) {
    QString error;
    script = ConsoleScript::read(options.script, error);
    if (!script) {
      output.error(error);
      return 1;
    }
  }
  ConsoleConnection connection(env);
  if (!options.noLog) {
    std::optional<QString> password = options.password;
    if (!password)
      password = Terminal::readSecret(QStringLiteral("Enter password: "));
    if (!password) {
      output.error(QStringLiteral("dbsweep-sql: no password given"));
      return 1;
    }
    try {
      connection.connect(options.user, *password, options.host);
    } catch (const OraError& e) {
      output.error(e.message());
      return 1;
    }
  }

  const bool interactive = !script && Terminal::stdinIsTerminal();
  ConsoleRunner::Options runOptions;
  runOptions.format = options.csv ? ResultPrinter::Format::Csv : ResultPrinter::Format::Text;
  // At a terminal an error leaves the user at the prompt, as in SQL*Plus.
  runOptions.continueOnError = options.continueOnError || interactive;
  runOptions.lineNumbers = !interactive;
  ConsoleRunner runner(connection, output, runOptions);
  if (interactive && connection.connected())
    output.printLine(QStringLiteral("Connected."));

  ConsoleScript statements(runner);
  if (script) {
    statements.runFile(*script, options.script, options.scriptArguments, {});
  } else if (interactive) {
    LineEditor editor;
    statements.run(
        [&editor, &output](const ScriptReader& statement) {
          const QString prompt = ConsoleScript::prompt(statement);
          if (!statement.inStatement())
            output.print(QStringLiteral("\n"));
          output.flush();
          const std::optional<QString> line = editor.readLine(prompt);
          // The spool file gets what was typed, as SQL*Plus writes it there.
          output.spoolOnly(prompt + line.value_or(QString()) + u'\n');
          return line;
        },
        {QDir::currentPath(), {}, true});
  } else {
    statements.run([](const ScriptReader&) { return Terminal::readLine(); }, {QDir::currentPath(), {}, false});
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
