#include "db/local/OrderedAggregates.h"

#include "db/OraError.h"
#include "db/local/OracleNumber.h"
#include "db/local/QueryBlock.h"
#include "db/local/SqlTranslator.h"

#include <sqlite3.h>

#include <algorithm>
#include <memory>

namespace OrderedAggregates {

namespace {

using QueryBlock::closing;
using QueryBlock::Range;

constexpr int Descending = 1;
constexpr int NullsFirst = 2;

// The ORDER BY list [begin, end) as engine arguments: each key, then its flags.
QString orderingArguments(const Tokens& t, size_t begin, size_t end, const Translate& translate) {
  QStringList out;
  for (const Range& key : QueryBlock::split(t, begin, end)) {
    size_t e = key.end;
    std::optional<bool> nullsFirst;
    if (e - key.begin > 2 && t[e - 2].is(u"NULLS")) {
      nullsFirst = t[e - 1].is(u"FIRST");
      e -= 2;
    }
    bool descending = false;
    if (e - key.begin > 1 && (t[e - 1].is(u"ASC") || t[e - 1].is(u"DESC"))) {
      descending = t[e - 1].is(u"DESC");
      --e;
    }
    const int flags = (descending ? Descending : 0) | (nullsFirst.value_or(descending) ? NullsFirst : 0);
    out << translate(key.begin, e) << QString::number(flags);
  }
  if (out.isEmpty())
    throw OraError(936, QStringLiteral("missing expression"));
  return out.join(QStringLiteral(", "));
}

// An ORDER BY at k, to the parenthesis closing at close: where its list starts.
size_t orderBy(const Tokens& t, size_t k, size_t close) {
  if (k + 1 >= close || !t[k].is(u"ORDER") || !t[k + 1].is(u"BY"))
    throw OraError(924, QStringLiteral("missing BY keyword"));
  return k + 2;
}

// A value of a row kept until the group is done.
struct Held {
  struct Free {
    void operator()(sqlite3_value* v) const { sqlite3_value_free(v); }
  };
  std::unique_ptr<sqlite3_value, Free> value;
  explicit Held(sqlite3_value* v) : value(sqlite3_value_dup(v)) {}
  sqlite3_value* get() const { return value.get(); }
  bool isNull() const { return sqlite3_value_type(get()) == SQLITE_NULL; }
};

// SQLite's order of two values that are not NULL: numbers before texts, texts byte by byte.
int compareValues(sqlite3_value* a, sqlite3_value* b) {
  const auto numeric = [](sqlite3_value* v) {
    const int type = sqlite3_value_type(v);
    return type == SQLITE_INTEGER || type == SQLITE_FLOAT;
  };
  if (numeric(a) != numeric(b))
    return numeric(a) ? -1 : 1;
  if (numeric(a)) {
    if (sqlite3_value_type(a) == SQLITE_INTEGER && sqlite3_value_type(b) == SQLITE_INTEGER) {
      const sqlite3_int64 x = sqlite3_value_int64(a), y = sqlite3_value_int64(b);
      return x < y ? -1 : x > y;
    }
    const double x = sqlite3_value_double(a), y = sqlite3_value_double(b);
    return x < y ? -1 : x > y;
  }
  const QByteArrayView x(reinterpret_cast<const char*>(sqlite3_value_text(a)), sqlite3_value_bytes(a));
  const QByteArrayView y(reinterpret_cast<const char*>(sqlite3_value_text(b)), sqlite3_value_bytes(b));
  return x.compare(y) < 0 ? -1 : x.compare(y) > 0;
}

// One row of a group: its ordering keys and the value aggregated.
struct Row {
  std::vector<Held> keys;
  Held value;
};

Row rowOf(int argc, sqlite3_value** argv, int valueAt, int keysAt) {
  Row row{{}, Held(argv[valueAt])};
  for (int k = keysAt; k + 1 < argc; k += 2)
    row.keys.emplace_back(argv[k]);
  return row;
}

// The rows' order by their keys, each key with its flags.
int compareKeys(const Row& a, const Row& b, const std::vector<int>& flags) {
  for (size_t k = 0; k < a.keys.size(); ++k) {
    const bool an = a.keys[k].isNull(), bn = b.keys[k].isNull();
    if (an && bn)
      continue;
    const bool nullsFirst = flags[k] & NullsFirst;
    if (an || bn)
      return an == nullsFirst ? -1 : 1;
    const int c = compareValues(a.keys[k].get(), b.keys[k].get());
    if (c)
      return flags[k] & Descending ? -c : c;
  }
  return 0;
}

struct Group {
  std::vector<Row> rows; // LISTAGG: every row; KEEP: the rows ranked first or last
  std::vector<int> flags;
  bool distinct = false; // LISTAGG's DISTINCT and separator
  QString separator;
};

Group* groupOf(sqlite3_context* ctx, bool create) {
  auto** slot = static_cast<Group**>(sqlite3_aggregate_context(ctx, create ? int(sizeof(Group*)) : 0));
  if (!slot)
    return nullptr;
  if (!*slot && create)
    *slot = new Group;
  return *slot;
}

// The group's first row: the flags of its keys.
Group* started(sqlite3_context* ctx, int argc, sqlite3_value** argv, int keysAt) {
  Group* g = groupOf(ctx, true);
  if (g && g->flags.empty())
    for (int k = keysAt + 1; k < argc; k += 2)
      g->flags.push_back(sqlite3_value_int(argv[k]));
  return g;
}

template <void (*Value)(sqlite3_context*)> void finish(sqlite3_context* ctx) {
  Value(ctx);
  delete groupOf(ctx, false);
}

// A window of a partition never drops rows: OVER holds no ORDER BY for these functions.
void noInverse(sqlite3_context* ctx, int, sqlite3_value**) {
  sqlite3_result_error(ctx, "ORA-30487: ORDER BY not allowed here", -1);
}

QString textOf(sqlite3_value* v) {
  switch (sqlite3_value_type(v)) {
  case SQLITE_INTEGER: return QString::number(sqlite3_value_int64(v));
  case SQLITE_FLOAT: return OracleNumber::toText(OracleNumber::Value::of(sqlite3_value_double(v)));
  default: return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)), sqlite3_value_bytes(v));
  }
}

// dbsweep_listagg(distinct, value, separator, key, flags, ...)
void listaggStep(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  Group* g = started(ctx, argc, argv, 3);
  if (!g)
    return sqlite3_result_error_nomem(ctx);
  g->distinct = sqlite3_value_int(argv[0]);
  g->separator = sqlite3_value_type(argv[2]) == SQLITE_NULL ? QString() : textOf(argv[2]);
  if (sqlite3_value_type(argv[1]) != SQLITE_NULL)
    g->rows.push_back(rowOf(argc, argv, 1, 3));
}

void listaggValue(sqlite3_context* ctx) {
  const Group* g = groupOf(ctx, false);
  if (!g || g->rows.empty())
    return sqlite3_result_null(ctx);
  std::vector<const Row*> order;
  for (const Row& r : g->rows)
    order.push_back(&r);
  std::stable_sort(order.begin(), order.end(),
                   [&](const Row* a, const Row* b) { return compareKeys(*a, *b, g->flags) < 0; });
  QStringList parts;
  for (const Row* r : order) {
    const QString text = textOf(r->value.get());
    if (!(g->distinct && parts.contains(text)))
      parts << text;
  }
  const QByteArray out = parts.join(g->separator).toUtf8();
  if (out.size() > 4000)
    return sqlite3_result_error(ctx, "ORA-01489: result of string concatenation is too long", -1);
  sqlite3_result_text(ctx, out.constData(), int(out.size()), SQLITE_TRANSIENT);
}

// dbsweep_keep_min(last, value, key, flags, ...) and the like: the group keeps the rows that rank
// first (or last) by the keys, ties included.
void keepStep(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  Group* g = started(ctx, argc, argv, 2);
  if (!g)
    return sqlite3_result_error_nomem(ctx);
  Row row = rowOf(argc, argv, 1, 2);
  const int c =
      g->rows.empty() ? -1 : compareKeys(row, g->rows.front(), g->flags) * (sqlite3_value_int(argv[0]) ? -1 : 1);
  if (c < 0)
    g->rows.clear();
  if (c <= 0)
    g->rows.push_back(std::move(row));
}

void result(sqlite3_context* ctx, const OracleNumber::Value& v) {
  if (v.isInteger)
    sqlite3_result_int64(ctx, v.integer);
  else
    sqlite3_result_double(ctx, v.real);
}

void keepValue(sqlite3_context* ctx) {
  const Group* g = groupOf(ctx, false);
  std::vector<sqlite3_value*> values;
  if (g)
    for (const Row& r : g->rows)
      if (!r.value.isNull())
        values.push_back(r.value.get());
  const QString function = QString::fromLatin1(static_cast<const char*>(sqlite3_user_data(ctx)));
  if (function == u"COUNT")
    return sqlite3_result_int64(ctx, qint64(values.size()));
  if (values.empty())
    return sqlite3_result_null(ctx);
  if (function == u"MIN" || function == u"MAX") {
    const auto less = [](sqlite3_value* a, sqlite3_value* b) { return compareValues(a, b) < 0; };
    return sqlite3_result_value(ctx, function == u"MIN" ? *std::min_element(values.begin(), values.end(), less)
                                                        : *std::max_element(values.begin(), values.end(), less));
  }
  try {
    OracleNumber::Value sum = OracleNumber::Value::of(qint64(0));
    for (sqlite3_value* v : values)
      sum = OracleNumber::add(
          sum, sqlite3_value_type(v) == SQLITE_INTEGER ? OracleNumber::Value::of(qint64(sqlite3_value_int64(v)))
               : sqlite3_value_type(v) == SQLITE_FLOAT ? OracleNumber::Value::of(sqlite3_value_double(v))
                                                       : OracleNumber::fromText(textOf(v)));
    result(ctx, function == u"AVG" ? OracleNumber::divide(sum, OracleNumber::Value::of(qint64(values.size()))) : sum);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

} // namespace

std::optional<QString> translateCall(const Tokens& t, size_t& i, size_t end, const Translate& translate) {
  const bool listagg = t[i].is(u"LISTAGG");
  if (i + 1 >= end || !t[i + 1].is(u"("))
    return std::nullopt;
  const size_t close = closing(t, i + 1, end);
  const size_t after = QueryBlock::afterOrdering(t, close, end);
  if (after == close && !listagg)
    return std::nullopt;
  if (after > end || !t[after - 1].is(u")"))
    throw OraError(907, QStringLiteral("missing right parenthesis"));
  const bool keep = after != close && t[close].is(u"KEEP");
  if (listagg ? keep : !keep)
    throw OraError(933, QStringLiteral("SQL command not properly ended"));
  size_t argsBegin = i + 2;
  const bool distinct = listagg && argsBegin < close && t[argsBegin].is(u"DISTINCT");
  argsBegin += listagg && argsBegin < close && (distinct || t[argsBegin].is(u"ALL")) ? 1 : 0;
  const std::vector<Range> args = QueryBlock::split(t, argsBegin, close - 1);
  QString call;
  if (listagg) {
    if (args.empty() || args.size() > 2)
      throw OraError(909, QStringLiteral("invalid number of arguments"));
    const QString separator = args.size() == 2 ? translate(args[1].begin, args[1].end) : QStringLiteral("NULL");
    // Without WITHIN GROUP the values come in the order the rows do.
    const QString keys = after == close ? QString()
                                        : QStringLiteral(", ") + orderingArguments(t, orderBy(t, close + 3, after - 1),
                                                                                   after - 1, translate);
    call = QStringLiteral("dbsweep_listagg(%1, %2, %3%4)")
               .arg(distinct ? 1 : 0)
               .arg(translate(args[0].begin, args[0].end), separator, keys);
  } else {
    const QString function = t[i].upper();
    if (!(function == u"MIN" || function == u"MAX" || function == u"SUM" || function == u"AVG" || function == u"COUNT"))
      throw OraError(3001, QStringLiteral("unimplemented feature"));
    // KEEP (DENSE_RANK FIRST|LAST ORDER BY ...)
    size_t k = close + 2;
    if (k + 1 >= after || !t[k].is(u"DENSE_RANK") || !(t[k + 1].is(u"FIRST") || t[k + 1].is(u"LAST")))
      throw OraError(2000, QStringLiteral("missing DENSE_RANK keyword"));
    const bool last = t[k + 1].is(u"LAST");
    if (args.size() != 1)
      throw OraError(909, QStringLiteral("invalid number of arguments"));
    const bool star = args[0].end == args[0].begin + 1 && t[args[0].begin].is(u"*");
    call = QStringLiteral("dbsweep_keep_%1(%2, %3, %4)")
               .arg(function.toLower())
               .arg(last ? 1 : 0)
               .arg(star ? QStringLiteral("1") : translate(args[0].begin, args[0].end),
                    orderingArguments(t, orderBy(t, k + 2, after - 1), after - 1, translate));
  }
  i = after;
  return call;
}

void registerFunctions(sqlite3* db) {
  const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  sqlite3_create_window_function(db, "dbsweep_listagg", -1, flags, nullptr, listaggStep, finish<listaggValue>,
                                 listaggValue, noInverse, nullptr);
  static const char* const functions[] = {"MIN", "MAX", "SUM", "AVG", "COUNT"};
  for (const char* function : functions)
    sqlite3_create_window_function(db, QByteArray("dbsweep_keep_" + QByteArray(function).toLower()).constData(), -1,
                                   flags, const_cast<char*>(function), keepStep, finish<keepValue>, keepValue,
                                   noInverse, nullptr);
}

} // namespace OrderedAggregates
