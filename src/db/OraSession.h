#pragma once

#include "db/DbEnvironment.h"
#include "db/OraDatabase.h"

#include <memory>

// A client session: opens databases and controls the transaction of the database it opened
// last. The host string chooses the backend: "local:NAME" or "local:/folder" is an embedded
// instance, anything else is an Oracle server.
class OraSession final {
public:
  explicit OraSession(DbEnvironment env) : m_env(std::move(env)) {}

  // connect is "user/password". Raises OraError when the logon fails.
  std::shared_ptr<OraDatabase> OpenDatabase(const QString& host, const QString& connect, int options);

  void BeginTrans();
  void CommitTrans();
  void Rollback();
  QString OipVersionNumber() const;

private:
  DbConnection& connection();

  DbEnvironment m_env;
  std::shared_ptr<DbConnection> m_connection;
};
