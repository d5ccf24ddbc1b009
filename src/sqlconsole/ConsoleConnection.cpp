#include "sqlconsole/ConsoleConnection.h"

#include <QScopeGuard>

void ConsoleConnection::connect(const QString& user, const QString& password, const QString& host) {
  m_database.reset();
  m_session = std::make_unique<OraSession>(m_env);
  m_database = m_session->OpenDatabase(host, user + u'/' + password, 0);
  try {
    m_session->BeginTrans();
  } catch (...) {
    m_database.reset();
    throw;
  }
  const bool quoted = user.size() >= 2 && user.startsWith(u'"') && user.endsWith(u'"');
  m_user = quoted ? user.mid(1, user.size() - 2) : user.toUpper();
  m_host = host;
}

void ConsoleConnection::disconnect(bool commit) {
  if (!m_database)
    return;
  // The logon ends whether or not the last commit or rollback went through.
  const auto end = qScopeGuard([this] {
    m_database.reset();
    m_session.reset();
  });
  if (commit)
    m_session->CommitTrans();
  else
    m_session->Rollback();
}
