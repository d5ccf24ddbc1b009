#include "db/local/Sqlite.h"

#include <cmath>

void throwSqlite(sqlite3* db, int code) {
  throw SqliteFailure{sqlite3_extended_errcode(db) ? sqlite3_extended_errcode(db) : code,
                      QString::fromUtf8(sqlite3_errmsg(db))};
}

SqliteStmt::SqliteStmt(sqlite3* db, const QString& sql) : m_db(db) {
  const QByteArray utf8 = sql.toUtf8();
  const char* tail = nullptr;
  const int rc = sqlite3_prepare_v2(db, utf8.constData(), int(utf8.size()), &m_stmt, &tail);
  if (rc != SQLITE_OK)
    throwSqlite(db, rc);
  if (!m_stmt) // only blanks or comments
    throw SqliteFailure{SQLITE_MISUSE, QStringLiteral("empty statement")};
}

SqliteStmt::~SqliteStmt() { sqlite3_finalize(m_stmt); }

SqliteStmt& SqliteStmt::bind(int index, const QVariant& v) {
  int rc = SQLITE_OK;
  if (!v.isValid() || v.isNull()) {
    rc = sqlite3_bind_null(m_stmt, index);
  } else {
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::Bool: rc = sqlite3_bind_int64(m_stmt, index, v.toLongLong()); break;
    case QMetaType::Double: rc = sqlite3_bind_double(m_stmt, index, v.toDouble()); break;
    case QMetaType::QByteArray: {
      const QByteArray b = v.toByteArray();
      rc = sqlite3_bind_blob(m_stmt, index, b.constData(), int(b.size()), SQLITE_TRANSIENT);
      break;
    }
    default: {
      const QByteArray t = v.toString().toUtf8();
      rc = sqlite3_bind_text(m_stmt, index, t.constData(), int(t.size()), SQLITE_TRANSIENT);
    }
    }
  }
  if (rc != SQLITE_OK)
    throwSqlite(m_db, rc);
  return *this;
}

SqliteStmt& SqliteStmt::bindPresent(const QVariantList& values) {
  for (int i = 0; i < sqlite3_bind_parameter_count(m_stmt) && i < values.size(); ++i)
    bind(i + 1, values[i]);
  return *this;
}

SqliteStmt& SqliteStmt::bindAll(const QVariantList& values) {
  for (int i = 0; i < values.size(); ++i)
    bind(i + 1, values[i]);
  return *this;
}

bool SqliteStmt::step() {
  const int rc = sqlite3_step(m_stmt);
  if (rc == SQLITE_ROW)
    return true;
  if (rc == SQLITE_DONE)
    return false;
  const SqliteFailure failure{sqlite3_extended_errcode(m_db), QString::fromUtf8(sqlite3_errmsg(m_db))};
  sqlite3_reset(m_stmt);
  throw failure;
}

void SqliteStmt::reset() {
  sqlite3_reset(m_stmt);
  sqlite3_clear_bindings(m_stmt);
}

namespace {

QVariant valueOf(sqlite3_value* v) {
  switch (sqlite3_value_type(v)) {
  case SQLITE_NULL: return {};
  case SQLITE_INTEGER: return qlonglong(sqlite3_value_int64(v));
  case SQLITE_FLOAT: {
    const double d = sqlite3_value_double(v);
    if (std::isfinite(d) && d == std::trunc(d) && std::fabs(d) < 9.0e15)
      return qlonglong(d);
    return d;
  }
  case SQLITE_BLOB: return QByteArray(static_cast<const char*>(sqlite3_value_blob(v)), sqlite3_value_bytes(v));
  default:
    return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)), sqlite3_value_bytes(v));
  }
}

} // namespace

QVariant SqliteStmt::column(int i) const {
  sqlite3_mutex* lock = sqlite3_db_mutex(m_db);
  sqlite3_mutex_enter(lock); // a column's value is safe to read only while the connection is held
  const QVariant value = valueOf(sqlite3_column_value(m_stmt, i));
  sqlite3_mutex_leave(lock);
  return value;
}

QVariantList SqliteStmt::row() const {
  const int n = sqlite3_column_count(m_stmt);
  QVariantList values;
  values.reserve(n);
  sqlite3_mutex* lock = sqlite3_db_mutex(m_db);
  sqlite3_mutex_enter(lock);
  for (int i = 0; i < n; ++i)
    values << valueOf(sqlite3_column_value(m_stmt, i));
  sqlite3_mutex_leave(lock);
  return values;
}

void sqliteExec(sqlite3* db, const QString& sql, const QVariantList& args) {
  if (args.isEmpty()) {
    char* error = nullptr;
    const int rc = sqlite3_exec(db, sql.toUtf8().constData(), nullptr, nullptr, &error);
    if (rc != SQLITE_OK) {
      const QString message = QString::fromUtf8(error ? error : sqlite3_errmsg(db));
      sqlite3_free(error);
      throw SqliteFailure{sqlite3_extended_errcode(db), message};
    }
    return;
  }
  SqliteStmt stmt(db, sql);
  stmt.bindAll(args);
  while (stmt.step()) {
  }
}

QVariant sqliteValue(sqlite3* db, const QString& sql, const QVariantList& args) {
  SqliteStmt stmt(db, sql);
  stmt.bindAll(args);
  return stmt.step() ? stmt.column(0) : QVariant();
}
