#pragma once

#include "db/DbEnvironment.h"
#include "db/OraDatabase.h"
#include "db/OraSession.h"

#include <memory>

// The console's logon, which CONNECT and DISCONNECT change during a run. All work of a logon is
// one transaction, opened at the logon.
class ConsoleConnection final {
public:
  explicit ConsoleConnection(DbEnvironment env) : m_env(std::move(env)) {}

  // Raises OraError when the logon fails; the previous logon is gone either way.
  void connect(const QString& user, const QString& password, const QString& host);
  // Ends the logon, committing or rolling back its work.
  void disconnect(bool commit);

  bool connected() const { return m_database != nullptr; }
  OraSession& session() { return *m_session; }
  OraDatabase& database() { return *m_database; }
  // As SHOW USER names it: upper case unless it was quoted.
  QString user() const { return connected() ? m_user : QString(); }
  QString host() const { return m_host; }

private:
  DbEnvironment m_env;
  std::unique_ptr<OraSession> m_session;
  std::shared_ptr<OraDatabase> m_database;
  QString m_user;
  QString m_host;
};
