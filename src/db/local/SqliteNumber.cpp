#include "db/local/SqliteNumber.h"

#include "db/OraError.h"

namespace SqliteNumber {

OracleNumber::Value read(sqlite3_value* v, const WideNumbers& wide) {
  switch (sqlite3_value_type(v)) {
  case SQLITE_INTEGER: return OracleNumber::Value::of(qint64(sqlite3_value_int64(v)));
  case SQLITE_FLOAT: {
    const double d = sqlite3_value_double(v);
    if (const QByteArray* digits = wide.find(d))
      return OracleNumber::Value::ofWide(*digits, d);
    return OracleNumber::Value::of(d);
  }
  default:
    return OracleNumber::fromText(
        QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)), sqlite3_value_bytes(v)));
  }
}

void result(sqlite3_context* ctx, const OracleNumber::Value& v, WideNumbers& wide) {
  if (v.isInteger)
    return sqlite3_result_int64(ctx, v.integer);
  std::optional<double> carrier = v.real;
  if (v.isWide())
    carrier = wide.carry(v.real, v.wide);
  else if (!wide.rememberPlain(v.real))
    carrier.reset();
  if (!carrier)
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  sqlite3_result_double(ctx, *carrier);
}

QString text(double d, const WideNumbers& wide) {
  if (const QByteArray* digits = wide.find(d))
    return QString::fromLatin1(*digits);
  return OracleNumber::toText(OracleNumber::Value::of(d));
}

} // namespace SqliteNumber
