#pragma once

#include "db/DbConnection.h"

#include <QStringList>

#include <memory>

// Passes everything to a real connection and keeps the text of every query and statement sent,
// failed ones included, so a test sees exactly what the program asked the database.
class RecordingConnection final : public DbConnection {
public:
  explicit RecordingConnection(std::shared_ptr<DbConnection> inner) : m_inner(std::move(inner)) {}

  std::unique_ptr<OraDynaset> query(const QString& sql, int options) override {
    m_sent << sql;
    return m_inner->query(sql, options);
  }
  qint64 execute(const QString& sql) override {
    m_sent << sql;
    return m_inner->execute(sql);
  }
  void begin() override { m_inner->begin(); }
  void commit() override { m_inner->commit(); }
  void rollback() override { m_inner->rollback(); }
  QString serverVersion() override { return m_inner->serverVersion(); }
  QString clientVersion() override { return m_inner->clientVersion(); }
  void interrupt() override { m_inner->interrupt(); }
  bool setCallTimeout(int milliseconds) override { return m_inner->setCallTimeout(milliseconds); }

  const QStringList& sent() const { return m_sent; }
  void forget() { m_sent.clear(); }

private:
  std::shared_ptr<DbConnection> m_inner;
  QStringList m_sent;
};
