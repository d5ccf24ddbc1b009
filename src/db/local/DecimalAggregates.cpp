#include "db/local/DecimalAggregates.h"

#include "db/OraError.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OracleNumber.h"
#include "db/local/SessionSettings.h"
#include "db/local/SqliteNumber.h"

#include <optional>

namespace DecimalAggregates {

namespace {

using OracleNumber::Decimal;
using OracleNumber::Value;

// The running total of a group or window frame.
struct Total {
  Decimal sum;
  qint64 count = 0;
};

Total* totalOf(sqlite3_context* ctx, bool create) {
  auto** slot = static_cast<Total**>(sqlite3_aggregate_context(ctx, create ? int(sizeof(Total*)) : 0));
  if (!slot)
    return nullptr;
  if (!*slot && create)
    *slot = new Total;
  return *slot;
}

WideNumbers& wideNumbers(sqlite3_context* ctx) {
  return static_cast<const SessionSettings*>(sqlite3_user_data(ctx))->wideNumbers;
}

// The value of an argument as a number, NULL ('' too) being none.
std::optional<Value> numberOf(sqlite3_context* ctx, sqlite3_value* v) {
  const int type = sqlite3_value_type(v);
  if (type == SQLITE_NULL || (type == SQLITE_TEXT && sqlite3_value_bytes(v) == 0))
    return std::nullopt;
  if (type == SQLITE_TEXT &&
      OracleDateTime::parseStored(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)))))
    throw OraError(932, QStringLiteral("inconsistent datatypes: expected NUMBER got DATE"));
  return SqliteNumber::read(v, wideNumbers(ctx));
}

template <int Sign> void add(sqlite3_context* ctx, int, sqlite3_value** argv) {
  try {
    const auto v = numberOf(ctx, argv[0]);
    if (!v)
      return;
    Total* total = totalOf(ctx, true);
    if (!total)
      return sqlite3_result_error_nomem(ctx);
    const Decimal d = Decimal::from(Sign > 0 ? *v : OracleNumber::negate(*v));
    total->sum = total->sum.plus(d);
    total->count += Sign;
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

template <bool Average> void current(sqlite3_context* ctx) {
  const Total* total = totalOf(ctx, false);
  if (!total || total->count == 0)
    return sqlite3_result_null(ctx);
  try {
    const Value sum = total->sum.value();
    SqliteNumber::result(ctx, Average ? OracleNumber::divide(sum, Value::of(total->count)) : sum, wideNumbers(ctx));
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

template <bool Average> void value(sqlite3_context* ctx) { current<Average>(ctx); }

template <bool Average> void finish(sqlite3_context* ctx) {
  current<Average>(ctx);
  if (Total* total = totalOf(ctx, false))
    delete total;
}

} // namespace

void registerAll(sqlite3* db, const SessionSettings* settings) {
  const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  auto* data = const_cast<SessionSettings*>(settings);
  sqlite3_create_window_function(db, "SUM", 1, flags, data, add<1>, finish<false>, value<false>, add<-1>, nullptr);
  sqlite3_create_window_function(db, "AVG", 1, flags, data, add<1>, finish<true>, value<true>, add<-1>, nullptr);
}

} // namespace DecimalAggregates
