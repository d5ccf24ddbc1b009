#pragma once

#include "db/DbConnection.h"

#include <memory>

// The open database every query and statement runs on.
class OraDatabase final {
public:
  explicit OraDatabase(std::shared_ptr<DbConnection> connection) : m_connection(std::move(connection)) {}

  std::unique_ptr<OraDynaset> CreateDynaset(const QString& sql, int options) {
    return m_connection->query(sql, options);
  }
  // Runs a statement without rows; returns the number of rows it processed.
  qint64 ExecuteSQL(const QString& sql) { return m_connection->execute(sql); }
  QString RDBMSVersion() { return m_connection->serverVersion(); }

  DbConnection& connection() { return *m_connection; }

private:
  std::shared_ptr<DbConnection> m_connection;
};
