#pragma once

#include "db/script/ScriptItem.h"
#include "sqlconsole/ColumnFormat.h"
#include "sqlconsole/ConsoleSettings.h"
#include "sqlconsole/ResultPrinter.h"
#include "sqlconsole/Substitution.h"

#include <optional>

class ConsoleConnection;
class ConsoleOutput;

// Runs a script's items on the console's logon, all inside one transaction: the work stays
// pending until the script commits or rolls back, is committed when the input ends normally
// (or at EXIT, CONNECT and DISCONNECT) and rolled back when the run stops on an error, unless
// WHENEVER SQLERROR EXIT says COMMIT. It also keeps what SET, COLUMN and DEFINE change.
class ConsoleRunner final {
public:
  struct Options {
    ResultPrinter::Format format = ResultPrinter::Format::Text;
    bool continueOnError = false;
    // Errors name the script line they come from.
    bool lineNumbers = true;
  };

  ConsoleRunner(ConsoleConnection& connection, ConsoleOutput& output, Options options);

  // False once the run has to stop: EXIT, or an error without --continue. `script` names a
  // nested script in error messages.
  bool run(const ScriptItem& item, const QString& script = {});
  // A SQL*Plus command's error: shown, and the run goes on as SQL*Plus's would.
  void commandError(const QString& message);
  // Commits or rolls back as the run ended; returns the exit status.
  int finish();
  bool stopped() const { return m_stopped; }

  ConsoleConnection& connection() { return m_connection; }
  ConsoleOutput& output() { return m_output; }
  ConsoleSettings& settings() { return m_settings; }
  ColumnFormats& columns() { return m_columns; }
  Substitution& substitution() { return m_substitution; }
  bool csv() const { return m_options.format == ResultPrinter::Format::Csv; }

private:
  // How the run ends: its status, and whether the work is kept.
  struct Exit {
    std::optional<int> code;
    bool sqlCode = false;
    bool commit = false;
  };

  void execute(const ScriptItem& item);
  void fail(const ScriptItem& item, const QString& script, const QString& message);
  void stop(const Exit& exit);

  ConsoleConnection& m_connection;
  ConsoleOutput& m_output;
  Options m_options;
  ConsoleSettings m_settings;
  ColumnFormats m_columns;
  Substitution m_substitution;
  // What a failing statement does; none: the run goes on.
  std::optional<Exit> m_errorExit;
  bool m_failed = false;
  bool m_stopped = false;
  // After a statement of a block fails, the rest of that block does not run.
  int m_lastSqlCode = 0;
  std::optional<int> m_exitCode;
  bool m_commitAtEnd = true;
};
