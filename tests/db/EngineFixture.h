#pragma once

#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "db/local/LocalEngine.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// A fresh embedded instance in a temporary folder, with the user SALES holding the sales
// fixture schema.
struct EngineFixture {
  QTemporaryDir dir;
  QString folder = dir.path() + QStringLiteral("/inst");

  EngineFixture() {
    LocalEngine::createInstance(folder, QStringLiteral("manager"));
    auto system = open(QStringLiteral("system"), QStringLiteral("manager"));
    system->ExecuteSQL(QStringLiteral("CREATE USER sales IDENTIFIED BY secret"));
    system->ExecuteSQL(QStringLiteral("GRANT CONNECT, RESOURCE, CREATE VIEW, CREATE SYNONYM TO sales"));
  }

  std::shared_ptr<OraDatabase> open(const QString& user, const QString& password) const {
    return std::make_shared<OraDatabase>(LocalEngine::connect(folder, user, password));
  }
  std::shared_ptr<OraDatabase> sales() const { return open(QStringLiteral("SALES"), QStringLiteral("secret")); }

  // Runs a script whose statements each end with ";" at the end of a line.
  static void run(OraDatabase& db, const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
      QFAIL(qPrintable(QStringLiteral("cannot read ") + path));
    QString statement;
    for (const QString& line : QString::fromUtf8(f.readAll()).split(u'\n')) {
      if (line.trimmed().startsWith(QStringLiteral("--")))
        continue;
      statement += line + u'\n';
      if (line.trimmed().endsWith(u';')) {
        statement = statement.trimmed();
        statement.chop(1);
        db.ExecuteSQL(statement);
        statement.clear();
      }
    }
  }
};

// What most engine test programs share: one instance for the whole run and the SALES session on
// it, opened by initTestCase and closed by cleanupTestCase.
class SalesSession {
protected:
  void openSales() {
    m_fx = std::make_unique<EngineFixture>();
    m_db = m_fx->sales();
  }
  void closeSales() {
    m_db.reset();
    m_fx.reset();
  }
  QStringList rows(const QString& sql);

  std::unique_ptr<EngineFixture> m_fx;
  std::shared_ptr<OraDatabase> m_db;
};

// The rows of a query as text, fields joined by "|", Null shown as "<null>".
inline QStringList rowsOf(OraDatabase& db, const QString& sql) {
  QStringList rows;
  auto d = db.CreateDynaset(sql, 4);
  const qint64 n = d->RecordCount();
  for (qint64 r = 0; r < n; ++r, d->MoveNext()) {
    QStringList fields;
    for (int c = 0; c < d->FieldCount(); ++c) {
      const QVariant v = d->Fields(c);
      fields << (v.isValid() ? v.toString() : QStringLiteral("<null>"));
    }
    rows << fields.join(u'|');
  }
  return rows;
}

// The Oracle error number a statement raises, 0 when it succeeds.
inline int errorOf(const std::function<void()>& f, QString* text = nullptr) {
  try {
    f();
  } catch (const OraError& e) {
    if (text)
      *text = e.message();
    return e.number();
  }
  return 0;
}

// The "sid,serial#" of db's own session, as ALTER SYSTEM KILL SESSION names it.
inline QString sessionOf(OraDatabase& db) {
  return rowsOf(db, QStringLiteral("select sid || ',' || serial# from v$session where status = 'ACTIVE'")).value(0);
}

// Kills db's session from a SYSTEM connection to the instance in folder, as a DBA would.
inline void killSession(OraDatabase& db, const QString& folder) {
  OraDatabase(LocalEngine::connect(folder, QStringLiteral("system"), QStringLiteral("manager")))
      .ExecuteSQL(QStringLiteral("alter system kill session '") + sessionOf(db) + u'\'');
}

inline QStringList SalesSession::rows(const QString& sql) { return rowsOf(*m_db, sql); }
