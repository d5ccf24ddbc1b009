#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>

#include <sqlite3.h>

// A failed SQLite call, before it is turned into the Oracle error the user sees.
struct SqliteFailure final {
  int code; // extended result code
  QString message;
};

// A prepared statement; finalized when it goes out of scope.
class SqliteStmt final {
public:
  SqliteStmt(sqlite3* db, const QString& sql);
  ~SqliteStmt();
  SqliteStmt(const SqliteStmt&) = delete;
  SqliteStmt& operator=(const SqliteStmt&) = delete;

  SqliteStmt& bind(int index, const QVariant& value); // 1-based
  SqliteStmt& bindAll(const QVariantList& values);
  // Binds those of values whose parameters the statement has: one made of parts of another may
  // leave some out.
  SqliteStmt& bindPresent(const QVariantList& values);
  // Steps once: true when a row is there. Raises SqliteFailure.
  bool step();
  void reset();
  int columnCount() const { return sqlite3_column_count(m_stmt); }
  QString columnName(int i) const { return QString::fromUtf8(sqlite3_column_name(m_stmt, i)); }
  // The declared type of a result column taken straight from a table; "" for an expression.
  QString declaredType(int i) const { return QString::fromUtf8(sqlite3_column_decltype(m_stmt, i)); }
  // Where a result column is read from: schema, table and column; "" for an expression.
  QString originSchema(int i) const { return QString::fromUtf8(sqlite3_column_database_name(m_stmt, i)); }
  QString originTable(int i) const { return QString::fromUtf8(sqlite3_column_table_name(m_stmt, i)); }
  QString originColumn(int i) const { return QString::fromUtf8(sqlite3_column_origin_name(m_stmt, i)); }
  // Integral floating values come back as integers: Oracle numbers have no such difference.
  QVariant column(int i) const;
  // Every column of the current row, read under one hold of the connection's lock rather than
  // one per call.
  QVariantList row() const;
  QString text(int i) const { return column(i).toString(); }
  bool readOnly() const { return sqlite3_stmt_readonly(m_stmt) != 0; }

private:
  sqlite3* m_db;
  sqlite3_stmt* m_stmt = nullptr;
};

// Runs sql (one or more statements) with no rows expected.
void sqliteExec(sqlite3* db, const QString& sql, const QVariantList& args = {});
// The first column of the first row, or an invalid QVariant.
QVariant sqliteValue(sqlite3* db, const QString& sql, const QVariantList& args = {});
[[noreturn]] void throwSqlite(sqlite3* db, int code);
