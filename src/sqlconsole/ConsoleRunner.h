#pragma once

#include "db/script/ScriptItem.h"
#include "sqlconsole/ResultPrinter.h"

#include <QTextStream>

#include <optional>

class OraDatabase;
class OraSession;

// Runs a script's items on one logged-on session, all inside one transaction: the work stays
// pending until the script commits or rolls back, is committed when the input ends normally
// and rolled back when the run stops on an error.
class ConsoleRunner final {
public:
  struct Options {
    ResultPrinter::Format format = ResultPrinter::Format::Text;
    bool continueOnError = false;
    // Errors name the script line they come from.
    bool lineNumbers = true;
  };

  ConsoleRunner(OraSession& session, OraDatabase& database, QTextStream& out, QTextStream& err, Options options);

  // Opens the transaction; false (the error reported) when that already fails.
  bool start();
  // False once the run has to stop: EXIT, or an error without --continue.
  bool run(const ScriptItem& item);
  // Commits or rolls back as the run ended; returns the exit status.
  int finish();

private:
  void execute(const ScriptItem& item);
  bool fail(const ScriptItem& item, const QString& message);

  OraSession& m_session;
  OraDatabase& m_database;
  QTextStream& m_out;
  QTextStream& m_err;
  Options m_options;
  bool m_failed = false;
  bool m_abandoned = false;
  // After a statement of a block fails, the rest of that block does not run.
  bool m_skippingBlock = false;
  std::optional<int> m_exitCode;
  bool m_commitAtEnd = true;
};
