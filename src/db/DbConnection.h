#pragma once

#include "db/OraDynaset.h"

#include <QString>
#include <QStringList>

#include <memory>

// What a backend provides: one logged-on connection. Outside begin() every statement commits by
// itself; after begin() nothing commits until commit() (or DDL) and rollback() undoes it.
class DbConnection {
public:
  virtual ~DbConnection() = default;
  virtual std::unique_ptr<OraDynaset> query(const QString& sql, int options) = 0;
  virtual qint64 execute(const QString& sql) = 0;
  virtual void begin() = 0;
  virtual void commit() = 0;
  virtual void rollback() = 0;
  virtual QString serverVersion() = 0;
  virtual QString clientVersion() = 0;
  // Breaks the call running on this connection, which then fails with ORA-01013. The one
  // member that may be called from another thread while a call runs.
  virtual void interrupt() = 0;
  // Makes every later call that runs longer than this fail (0: no limit). False when the
  // backend cannot limit its calls.
  virtual bool setCallTimeout(int milliseconds) = 0;
  // DBMS_OUTPUT: whether the session keeps the lines its PL/SQL writes, and those complete lines
  // kept since the last call. A backend that cannot read them back keeps none.
  virtual void enableServerOutput(bool) {}
  virtual QStringList takeServerOutput() { return {}; }
};
