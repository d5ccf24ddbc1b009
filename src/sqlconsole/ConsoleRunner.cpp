#include "sqlconsole/ConsoleRunner.h"

#include "db/OraError.h"
#include "db/OraSession.h"
#include "sqlconsole/StatementFeedback.h"

ConsoleRunner::ConsoleRunner(OraSession& session, OraDatabase& database, QTextStream& out, QTextStream& err,
                             Options options)
    : m_session(session), m_database(database), m_out(out), m_err(err), m_options(options) {}

bool ConsoleRunner::start() {
  try {
    m_session.BeginTrans();
    return true;
  } catch (const std::exception& e) {
    m_err << QString::fromUtf8(e.what()) << '\n';
    m_err.flush();
    m_failed = true;
    m_abandoned = true;
    return false;
  }
}

bool ConsoleRunner::run(const ScriptItem& item) {
  bool goOn = true;
  switch (item.kind) {
  case ScriptItem::Kind::Prompt: m_out << item.text << '\n'; break;
  case ScriptItem::Kind::ErrorMode: m_options.continueOnError = item.continueOnError; break;
  case ScriptItem::Kind::Exit:
    m_exitCode = item.exitCode;
    m_commitAtEnd = item.commit;
    goOn = false;
    break;
  case ScriptItem::Kind::Unterminated:
    m_err << QStringLiteral("line %1: not run: the statement does not end with ';' or a '/' line").arg(item.line)
          << '\n';
    break;
  case ScriptItem::Kind::Failure: goOn = fail(item, item.text); break;
  case ScriptItem::Kind::BlockEnd:
    if (!std::exchange(m_skippingBlock, false) && m_options.format == ResultPrinter::Format::Text)
      m_out << "\nPL/SQL procedure successfully completed.\n";
    break;
  case ScriptItem::Kind::Statement:
    if (item.inBlock && m_skippingBlock)
      break;
    try {
      execute(item);
    } catch (const std::exception& e) {
      m_skippingBlock = item.inBlock;
      goOn = fail(item, QString::fromUtf8(e.what()));
    }
    break;
  }
  m_out.flush();
  m_err.flush();
  return goOn;
}

void ConsoleRunner::execute(const ScriptItem& item) {
  if (StatementFeedback::isQuery(item.text)) {
    auto rows = m_database.CreateDynaset(item.text, OraDynaset::ReadOnly);
    ResultPrinter(m_options.format).print(*rows, m_out);
    rows->Close();
    return;
  }
  const qint64 processed = m_database.ExecuteSQL(item.text);
  if (m_options.format == ResultPrinter::Format::Text && !item.inBlock)
    m_out << '\n' << StatementFeedback::message(item.text, processed) << '\n';
}

bool ConsoleRunner::fail(const ScriptItem& item, const QString& message) {
  m_failed = true;
  if (m_options.lineNumbers)
    m_err << QStringLiteral("line %1: ").arg(item.line);
  m_err << message << '\n';
  if (m_options.continueOnError)
    return true;
  m_abandoned = true;
  return false;
}

int ConsoleRunner::finish() {
  try {
    if (m_abandoned || !m_commitAtEnd)
      m_session.Rollback();
    else
      m_session.CommitTrans();
  } catch (const std::exception& e) {
    m_err << QString::fromUtf8(e.what()) << '\n';
    m_failed = true;
  }
  m_out.flush();
  m_err.flush();
  const int code = m_exitCode.value_or(0);
  return m_failed && code == 0 ? 1 : code;
}
