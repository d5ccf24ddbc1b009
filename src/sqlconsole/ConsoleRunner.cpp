#include "sqlconsole/ConsoleRunner.h"

#include "db/OraError.h"
#include "sqlconsole/ConsoleConnection.h"
#include "sqlconsole/ConsoleOutput.h"
#include "sqlconsole/StatementFeedback.h"

#include <QElapsedTimer>
#include <QTime>

namespace {

// SET TIMING ON's line after a statement.
QString elapsed(qint64 ms) {
  const QTime time = QTime::fromMSecsSinceStartOfDay(int(ms % 86400000));
  return QStringLiteral("Elapsed: ") + time.toString(QStringLiteral("HH:mm:ss.zzz")).chopped(1);
}

} // namespace

ConsoleRunner::ConsoleRunner(ConsoleConnection& connection, ConsoleOutput& output, Options options)
    : m_connection(connection), m_output(output), m_options(options) {
  if (!options.continueOnError)
    m_errorExit = Exit{};
}

bool ConsoleRunner::run(const ScriptItem& item, const QString& script) {
  switch (item.kind) {
  case ScriptItem::Kind::Prompt: m_output.printLine(item.text); break;
  case ScriptItem::Kind::ErrorMode:
    if (item.continueOnError)
      m_errorExit.reset();
    else
      m_errorExit = Exit{item.exitCode, item.sqlCode, item.commit};
    break;
  case ScriptItem::Kind::Exit: stop(Exit{item.exitCode, item.sqlCode, item.commit}); break;
  case ScriptItem::Kind::Unterminated:
    m_output.error(
        QStringLiteral("line %1: not run: the statement does not end with ';' or a '/' line").arg(item.line));
    break;
  case ScriptItem::Kind::Failure: fail(item, script, item.text); break;
  case ScriptItem::Kind::Statement:
    if (!m_connection.connected()) {
      commandError(QStringLiteral("SP2-0640: Not connected"));
      break;
    }
    try {
      execute(item);
    } catch (const OraError& e) {
      m_lastSqlCode = e.number();
      fail(item, script, e.message());
    } catch (const std::exception& e) {
      fail(item, script, QString::fromUtf8(e.what()));
    }
    break;
  }
  m_output.flush();
  return !m_stopped;
}

void ConsoleRunner::execute(const ScriptItem& item) {
  QElapsedTimer timer;
  timer.start();
  QString text;
  QTextStream out(&text);
  DbConnection& session = m_connection.database().connection();
  session.enableServerOutput(m_settings.serverOutput);
  if (StatementFeedback::isQuery(item.text)) {
    auto rows = m_connection.database().CreateDynaset(item.text, OraDynaset::ReadOnly);
    const ResultLayout layout{m_settings.lineSize, m_settings.pageSize, m_settings.heading, m_settings.feedback,
                              &m_columns};
    ResultPrinter(m_options.format, layout).print(*rows, out);
    rows->Close();
  } else {
    const qint64 processed = m_connection.database().ExecuteSQL(item.text);
    // What the statement wrote with DBMS_OUTPUT comes before its feedback, as in SQL*Plus.
    if (m_settings.serverOutput)
      for (const QString& line : session.takeServerOutput())
        out << line << '\n';
    if (!csv() && m_settings.feedback > 0)
      out << '\n' << StatementFeedback::message(item.text, processed) << '\n';
  }
  if (m_settings.timing && !csv())
    out << elapsed(timer.elapsed()) << '\n';
  out.flush();
  m_output.print(text);
}

void ConsoleRunner::commandError(const QString& message) { m_output.error(message); }

void ConsoleRunner::fail(const ScriptItem& item, const QString& script, const QString& message) {
  m_failed = true;
  QString where;
  if (m_options.lineNumbers)
    where = QStringLiteral("%1line %2: ").arg(script.isEmpty() ? QString() : script + u' ').arg(item.line);
  m_output.error(where + message);
  if (m_errorExit)
    stop(*m_errorExit);
}

void ConsoleRunner::stop(const Exit& exit) {
  m_exitCode = exit.sqlCode ? std::optional<int>(m_lastSqlCode) : exit.code;
  m_commitAtEnd = exit.commit;
  m_stopped = true;
}

int ConsoleRunner::finish() {
  try {
    m_connection.disconnect(m_commitAtEnd);
  } catch (const std::exception& e) {
    m_output.error(QString::fromUtf8(e.what()));
    m_failed = true;
  }
  m_output.flush();
  const int code = m_exitCode.value_or(0);
  return m_failed && code == 0 ? 1 : code;
}
