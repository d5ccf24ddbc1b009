#include "db/local/SqliteNumber.h"

namespace SqliteNumber {

OracleNumber::Value read(sqlite3_value* v) {
  switch (sqlite3_value_type(v)) {
  case SQLITE_INTEGER: return OracleNumber::Value::of(qint64(sqlite3_value_int64(v)));
  case SQLITE_FLOAT: return OracleNumber::Value::of(sqlite3_value_double(v));
  default:
    return OracleNumber::fromText(
        QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)), sqlite3_value_bytes(v)));
  }
}

void result(sqlite3_context* ctx, const OracleNumber::Value& v) {
  if (v.isInteger)
    sqlite3_result_int64(ctx, v.integer);
  else if (v.isWide())
    sqlite3_result_text(ctx, v.wide.constData(), int(v.wide.size()), SQLITE_TRANSIENT);
  else
    sqlite3_result_double(ctx, v.real);
}

} // namespace SqliteNumber
