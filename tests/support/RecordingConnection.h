#pragma once

#include "db/DbConnection.h"

#include <QStringList>

#include <memory>

// Passes every call to a real connection; tests override the calls they watch or hold.
class PassThroughConnection : public DbConnection {
public:
  explicit PassThroughConnection(std::shared_ptr<DbConnection> inner) : m_inner(std::move(inner)) {}

  std::unique_ptr<OraDynaset> query(const QString& sql, int options) override { return m_inner->query(sql, options); }
  qint64 execute(const QString& sql) override { return m_inner->execute(sql); }
  void begin() override { m_inner->begin(); }
  void commit() override { m_inner->commit(); }
  void rollback() override { m_inner->rollback(); }
  QString serverVersion() override { return m_inner->serverVersion(); }
  QString clientVersion() override { return m_inner->clientVersion(); }
  void interrupt() override { m_inner->interrupt(); }
  bool setCallTimeout(int milliseconds) override { return m_inner->setCallTimeout(milliseconds); }

private:
  std::shared_ptr<DbConnection> m_inner;
};

// Keeps the text of every query and statement sent, failed ones included, so a test sees
// exactly what the program asked the database.
class RecordingConnection final : public PassThroughConnection {
public:
  using PassThroughConnection::PassThroughConnection;

  std::unique_ptr<OraDynaset> query(const QString& sql, int options) override {
    m_sent << sql;
    return PassThroughConnection::query(sql, options);
  }
  qint64 execute(const QString& sql) override {
    m_sent << sql;
    return PassThroughConnection::execute(sql);
  }

  const QStringList& sent() const { return m_sent; }
  void forget() { m_sent.clear(); }

private:
  QStringList m_sent;
};
