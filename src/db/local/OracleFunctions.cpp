#include "db/local/OracleFunctions.h"

#include "db/OraError.h"
#include "db/local/OracleDate.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OracleNumber.h"
#include "db/local/SessionSettings.h"

#include <QDateTime>
#include <QHash>

#include <cctype>
#include <chrono>
#include <cmath>
#include <limits>

namespace {

using OracleDateTime::DateTime;
using OracleNumber::Decimal;
using OracleNumber::Value;

// Positions and lengths count characters, not UTF-16 units: a character beyond the BMP is one.
using Chars = QList<uint>;

QString fromChars(const uint* begin, qsizetype count) {
  return QString::fromUcs4(reinterpret_cast<const char32_t*>(begin), count);
}

int compare(const Value& a, const Value& b) {
  if (a.isInteger && b.isInteger)
    return a.integer < b.integer ? -1 : a.integer > b.integer ? 1 : 0;
  const double x = a.toDouble();
  const double y = b.toDouble();
  return x < y ? -1 : x > y ? 1 : 0;
}

// The arguments of one call, converted as Oracle converts implicitly, and its result.
class Call final {
public:
  Call(sqlite3_context* ctx, int argc, sqlite3_value** argv) : m_ctx(ctx), m_argc(argc), m_argv(argv) {}

  int count() const { return m_argc; }
  // '' is NULL to Oracle.
  bool isNull(int i) const {
    const int type = sqlite3_value_type(m_argv[i]);
    return type == SQLITE_NULL || (type == SQLITE_TEXT && sqlite3_value_bytes(m_argv[i]) == 0);
  }
  bool anyNull() const {
    for (int i = 0; i < m_argc; ++i)
      if (isNull(i))
        return true;
    return false;
  }
  bool isNumber(int i) const {
    const int type = sqlite3_value_type(m_argv[i]);
    return type == SQLITE_INTEGER || type == SQLITE_FLOAT;
  }

  QByteArray utf8(int i) const {
    if (sqlite3_value_type(m_argv[i]) == SQLITE_INTEGER)
      return QByteArray::number(sqlite3_value_int64(m_argv[i]));
    if (isNumber(i))
      return OracleNumber::toText(number(i)).toUtf8();
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(m_argv[i]));
    return QByteArray(text, sqlite3_value_bytes(m_argv[i]));
  }
  // A number as TO_CHAR prints it.
  QString text(int i) const { return QString::fromUtf8(utf8(i)); }
  Chars chars(int i) const { return text(i).toUcs4(); }

  Value number(int i) const {
    switch (sqlite3_value_type(m_argv[i])) {
    case SQLITE_INTEGER: return Value::of(qint64(sqlite3_value_int64(m_argv[i])));
    case SQLITE_FLOAT: return Value::of(sqlite3_value_double(m_argv[i]));
    default: return OracleNumber::fromText(text(i));
    }
  }
  // Oracle truncates the fraction of a position, length or count.
  qint64 integer(int i) const {
    const Value v = number(i);
    if (v.isInteger)
      return v.integer;
    return qint64(std::clamp(std::trunc(v.real), -9.0e18, 9.0e18));
  }

  // Whether a value could be a DATE in its stored form, which starts with the year and a slash.
  bool mayBeDate(int i) const {
    if (sqlite3_value_type(m_argv[i]) != SQLITE_TEXT || sqlite3_value_bytes(m_argv[i]) < 5)
      return false;
    const auto* s = reinterpret_cast<const char*>(sqlite3_value_text(m_argv[i]));
    return isdigit(uchar(s[0])) && isdigit(uchar(s[1])) && isdigit(uchar(s[2])) && isdigit(uchar(s[3])) && s[4] == '/';
  }
  std::optional<DateTime> storedDate(int i) const {
    if (sqlite3_value_type(m_argv[i]) != SQLITE_TEXT)
      return std::nullopt;
    return OracleDateTime::parseStored(text(i));
  }
  DateTime date(int i) const {
    if (isNumber(i))
      throw OraError(932, QStringLiteral("inconsistent datatypes: expected DATE got NUMBER"));
    return session().date(text(i));
  }
  const SessionSettings& session() const {
    static const SessionSettings defaults;
    const auto* settings = static_cast<const SessionSettings*>(sqlite3_user_data(m_ctx));
    return settings ? *settings : defaults;
  }

  void setNull() { sqlite3_result_null(m_ctx); }
  void set(const QString& text) { setUtf8(text.toUtf8()); }
  void setUtf8(const QByteArray& utf8) {
    if (utf8.isEmpty())
      return setNull();
    sqlite3_result_text(m_ctx, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
  }
  void set(const Value& v) {
    if (v.isInteger)
      sqlite3_result_int64(m_ctx, v.integer);
    else
      sqlite3_result_double(m_ctx, v.real);
  }
  void set(const DateTime& d) { set(OracleDateTime::stored(d)); }

  void setArgument(int i) {
    if (isNull(i))
      setNull();
    else
      sqlite3_result_value(m_ctx, m_argv[i]);
  }
  // Argument i in the type of argument model, as DECODE, GREATEST and LEAST return it.
  void setArgumentAs(int i, int model) {
    if (isNull(i))
      setNull();
    else if (isNumber(model))
      set(number(i));
    else
      set(text(i));
  }

private:
  sqlite3_context* m_ctx;
  int m_argc;
  sqlite3_value** m_argv;
};

OraError wrongArgumentCount() { return OraError(909, QStringLiteral("invalid number of arguments")); }

void nvl2(Call& c) { c.setArgument(c.isNull(0) ? 2 : 1); }

// Oracle compares in the type of the first search value, and NULL matches NULL here.
void decode(Call& c) {
  const int n = c.count();
  if (n < 3)
    throw wrongArgumentCount();
  const bool numeric = c.isNumber(1);
  std::optional<Value> number;
  std::optional<QByteArray> text;
  for (int k = 1; k + 1 < n; k += 2) {
    bool match = false;
    if (c.isNull(0) || c.isNull(k)) {
      match = c.isNull(0) && c.isNull(k);
    } else if (numeric) {
      if (!number)
        number = c.number(0);
      match = compare(*number, c.number(k)) == 0;
    } else {
      if (!text)
        text = c.utf8(0);
      match = *text == c.utf8(k);
    }
    if (match)
      return c.setArgumentAs(k + 1, 2);
  }
  if (n % 2 == 0)
    c.setArgumentAs(n - 1, 2);
  else
    c.setNull();
}

// Simple case mapping, one character for one, as Oracle's UPPER keeps 'ß'.
template <char32_t (*Map)(char32_t)> void mapCase(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  Chars s = c.chars(0);
  for (uint& ch : s)
    ch = Map(ch);
  c.set(fromChars(s.constData(), s.size()));
}
char32_t upperOf(char32_t ch) { return QChar::toUpper(ch); }
char32_t lowerOf(char32_t ch) { return QChar::toLower(ch); }

void substr(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const Chars s = c.chars(0);
  const qint64 size = s.size();
  qint64 start = c.integer(1);
  if (start == 0)
    start = 1;
  else if (start < 0)
    start += size + 1;
  if (start < 1 || start > size)
    return c.setNull();
  qint64 length = size - start + 1;
  if (c.count() == 3) {
    const qint64 wanted = c.integer(2);
    if (wanted < 1)
      return c.setNull();
    length = qMin(length, wanted);
  }
  c.set(fromChars(s.constData() + start - 1, length));
}

void instr(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const Chars s = c.chars(0);
  const Chars sub = c.chars(1);
  const qint64 position = c.count() > 2 ? c.integer(2) : 1;
  const qint64 occurrence = c.count() > 3 ? c.integer(3) : 1;
  if (occurrence < 1)
    throw OraError(1428, QStringLiteral("argument '%1' is out of range").arg(occurrence));
  const qint64 size = s.size();
  const qint64 width = sub.size();
  const auto matchesAt = [&](qint64 at) { return std::equal(sub.constBegin(), sub.constEnd(), s.constBegin() + at); };
  qint64 found = 0;
  if (position > 0) {
    for (qint64 at = position - 1; at + width <= size; ++at)
      if (matchesAt(at) && ++found == occurrence)
        return c.set(Value::of(at + 1));
  } else if (position < 0) {
    // Backwards from the character |position| from the end, matches may start there.
    for (qint64 at = qMin(size + position, size - width); at >= 0; --at)
      if (matchesAt(at) && ++found == occurrence)
        return c.set(Value::of(at + 1));
  }
  c.set(Value::of(qint64(0)));
}

void length(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(Value::of(qint64(c.chars(0).size())));
}

// LPAD and RPAD count the width a character takes on a terminal: two for the wide characters of
// East Asian scripts, as Oracle counts them in a multibyte character set.
int displayWidth(uint ch) {
  const bool wide =
      (ch >= 0x1100 && ch <= 0x115F) || (ch >= 0x2E80 && ch <= 0x303E) || (ch >= 0x3041 && ch <= 0x33FF) ||
      (ch >= 0x3400 && ch <= 0x4DBF) || (ch >= 0x4E00 && ch <= 0x9FFF) || (ch >= 0xA000 && ch <= 0xA4CF) ||
      (ch >= 0xAC00 && ch <= 0xD7A3) || (ch >= 0xF900 && ch <= 0xFAFF) || (ch >= 0xFE30 && ch <= 0xFE4F) ||
      (ch >= 0xFF00 && ch <= 0xFF60) || (ch >= 0xFFE0 && ch <= 0xFFE6) || (ch >= 0x1F300 && ch <= 0x1F64F) ||
      (ch >= 0x1F900 && ch <= 0x1F9FF) || (ch >= 0x20000 && ch <= 0x3FFFD);
  return wide ? 2 : 1;
}

template <bool Left> void pad(Call& c) {
  if (c.anyNull())
    return c.setNull();
  // A VARCHAR2 holds no more; it also bounds what a careless LPAD(x, 1e9) allocates.
  const qint64 target = qMin<qint64>(c.integer(1), 32767);
  if (target < 1)
    return c.setNull();
  const Chars s = c.chars(0);
  const Chars filler = c.count() == 3 ? c.chars(2) : Chars{uint(u' ')};
  Chars kept;
  qint64 width = 0;
  for (uint ch : s) {
    if (width + displayWidth(ch) > target)
      break;
    width += displayWidth(ch);
    kept.append(ch);
  }
  Chars fill;
  for (qsizetype k = 0; kept.size() == s.size() && width < target; ++k) {
    const uint ch = filler[k % filler.size()];
    if (width + displayWidth(ch) > target)
      break;
    width += displayWidth(ch);
    fill.append(ch);
  }
  const Chars out = Left ? fill + kept : kept + fill;
  c.set(fromChars(out.constData(), out.size()));
}

template <bool Leading, bool Trailing> void trim(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const Chars s = c.chars(0);
  const Chars set = c.count() == 2 ? c.chars(1) : Chars{uint(u' ')};
  qsizetype begin = 0;
  qsizetype end = s.size();
  while (Leading && begin < end && set.contains(s[begin]))
    ++begin;
  while (Trailing && end > begin && set.contains(s[end - 1]))
    --end;
  c.set(fromChars(s.constData() + begin, end - begin));
}

void replace(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  QString s = c.text(0);
  if (!c.isNull(1))
    s.replace(c.text(1), c.count() == 3 && !c.isNull(2) ? c.text(2) : QString());
  c.set(s);
}

void toChar(Call& c) {
  if (c.isNull(0) || (c.count() == 2 && c.isNull(1)))
    return c.setNull();
  const bool model = c.count() == 2;
  if (c.isNumber(0))
    return c.set(model ? OracleNumber::format(c.number(0), c.text(1)) : OracleNumber::toText(c.number(0)));
  if (const auto d = c.storedDate(0))
    return c.set(model ? OracleDateTime::format(*d, c.text(1)) : c.session().dateText(*d));
  c.set(model ? OracleNumber::format(c.number(0), c.text(1)) : c.text(0));
}

// || and CONCAT: a NULL side counts as no text, so only two NULLs give NULL. Numbers and dates
// join as TO_CHAR prints them.
void concat(Call& c) {
  if (c.count() != 2)
    throw wrongArgumentCount();
  // Joined as UTF-8: a path of SYS_CONNECT_BY_PATH is built of thousands of these.
  QByteArray joined;
  for (int i = 0; i < 2; ++i) {
    if (c.isNull(i))
      continue;
    const auto date = c.mayBeDate(i) ? c.storedDate(i) : std::nullopt;
    joined += date ? c.session().dateText(*date).toUtf8() : c.utf8(i);
  }
  c.setUtf8(joined);
}

void toDate(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const QString model = c.count() == 2 ? c.text(1) : c.session().dateModel();
  c.set(OracleDateTime::parse(c.text(0), model, QDate::currentDate()));
}

void toNumber(Call& c) {
  if (c.anyNull())
    return c.setNull();
  if (c.isNumber(0))
    return c.set(c.number(0));
  c.set(c.count() == 2 ? OracleNumber::parse(c.text(0), c.text(1)) : OracleNumber::fromText(c.text(0)));
}

// TRUNC and ROUND take a number or a date; a text in the stored form of a date is a date.
template <bool Round> void truncOrRound(Call& c) {
  if (c.anyNull())
    return c.setNull();
  if (const auto d = c.storedDate(0)) {
    const QString unit = c.count() == 2 ? c.text(1) : QStringLiteral("DD");
    return c.set(Round ? OracleDateTime::round(*d, unit) : OracleDateTime::truncate(*d, unit));
  }
  const Decimal value = Decimal::from(c.number(0));
  const int places = c.count() == 2 ? int(std::clamp<qint64>(c.integer(1), -1000, 1000)) : 0;
  c.set((Round ? value.rounded(places) : value.truncated(places)).value());
}

void addMonths(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.set(OracleDateTime::addMonths(c.date(0), c.integer(1)));
}

void monthsBetween(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.set(Decimal::from(Value::of(OracleDateTime::monthsBetween(c.date(0), c.date(1)))).value());
}

// EXTRACT of a DATE: its year, month or day. A DATE has a time but, to EXTRACT, no hour,
// minute or second: those are for timestamps (ORA-30076).
void extract(Call& c) {
  if (c.isNull(1))
    return c.setNull();
  const QString field = c.text(0);
  const DateTime d = c.date(1);
  if (field == u"YEAR")
    return c.set(Value::of(qint64(d.date.year())));
  if (field == u"MONTH")
    return c.set(Value::of(qint64(d.date.month())));
  if (field == u"DAY")
    return c.set(Value::of(qint64(d.date.day())));
  throw OraError(30076, QStringLiteral("invalid extract field for extract source"));
}

void lastDay(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(OracleDateTime::lastDay(c.date(0)));
}

// Oracle's arithmetic, which the translator turns into calls of these: a DATE (a text in its
// stored form) moves by a number of days, two DATEs subtract to the days between them, and
// numbers compute in decimal; a text other than a number is ORA-01722 as in Oracle.
OraError dateNotNumber() { return OraError(932, QStringLiteral("inconsistent datatypes: expected NUMBER got DATE")); }

void plus(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const auto a = c.storedDate(0);
  const auto b = c.storedDate(1);
  if (a && b)
    throw OraError(975, QStringLiteral("date + date not allowed"));
  if (a)
    return c.set(OracleDateTime::addDays(*a, c.number(1).toDouble()));
  if (b)
    return c.set(OracleDateTime::addDays(*b, c.number(0).toDouble()));
  c.set(OracleNumber::add(c.number(0), c.number(1)));
}

void minus(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const auto a = c.storedDate(0);
  const auto b = c.storedDate(1);
  if (a && b) {
    const qint64 seconds = OracleDateTime::secondsBetween(*b, *a);
    constexpr qint64 day = 86400;
    return c.set(seconds % day == 0 ? Value::of(seconds / day) : Value::of(double(seconds) / day));
  }
  if (a)
    return c.set(OracleDateTime::addDays(*a, -c.number(1).toDouble()));
  if (b)
    throw dateNotNumber();
  c.set(OracleNumber::add(c.number(0), OracleNumber::negate(c.number(1))));
}

// Numbers only: a DATE has no product, quotient or sign.
Value numberOperand(Call& c, int i) {
  if (c.storedDate(i))
    throw dateNotNumber();
  return c.number(i);
}

template <Value (*Operation)(const Value&, const Value&)> void numeric(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.set(Operation(numberOperand(c, 0), numberOperand(c, 1)));
}

void negate(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(OracleNumber::negate(numberOperand(c, 0)));
}

// A text literal compared with a value takes the value's kind, as Oracle converts the text side
// of a comparison with a number.
void compared(Call& c) {
  if (!c.isNull(0) && c.isNumber(0))
    return c.set(c.number(1));
  c.setArgument(1);
}

// The value of a query used as a value, given how many rows it has, counted up to two.
void singleRow(Call& c) {
  if (c.integer(0) > 1)
    throw OraError(1427, QStringLiteral("single-row subquery returns more than one row"));
  c.setArgument(1);
}

int fractionDigits(const Decimal& d) { return qMax(0, int(d.digits().size()) - d.point()); }

// The remainder keeps the sign of the dividend, as Oracle's MOD does, and MOD(m, 0) is m.
void mod(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const Value m = c.number(0);
  const Value n = c.number(1);
  if (m.isInteger && n.isInteger) {
    if (n.integer == 0)
      return c.set(m);
    return c.set(Value::of(n.integer == -1 ? qint64(0) : m.integer % n.integer));
  }
  if (n.toDouble() == 0)
    return c.set(m);
  // In decimal where both scale to exact integers, so that MOD(0.3, 0.1) is 0 and not 0.0999….
  const Decimal dm = Decimal::from(m);
  const Decimal dn = Decimal::from(n);
  const int places = qMax(fractionDigits(dm), fractionDigits(dn));
  const Value sm = dm.shifted(places).value();
  const Value sn = dn.shifted(places).value();
  if (places <= 15 && sm.isInteger && sn.isInteger && sn.integer != 0 && sn.integer != -1)
    return c.set(Decimal::from(Value::of(sm.integer % sn.integer)).shifted(-places).value());
  c.set(Value::of(std::fmod(m.toDouble(), n.toDouble())));
}

void abs(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  const Value v = c.number(0);
  if (v.isInteger && v.integer != std::numeric_limits<qint64>::min())
    return c.set(Value::of(v.integer < 0 ? -v.integer : v.integer));
  c.set(Value::of(std::fabs(v.toDouble())));
}

// In the type of the first argument: numbers compare as numbers, anything else as text.
template <int Sign> void extreme(Call& c) {
  if (c.count() == 0)
    throw wrongArgumentCount();
  if (c.anyNull())
    return c.setNull();
  int best = 0;
  if (c.isNumber(0)) {
    Value top = c.number(0);
    for (int i = 1; i < c.count(); ++i) {
      const Value v = c.number(i);
      if (compare(v, top) * Sign > 0) {
        top = v;
        best = i;
      }
    }
  } else {
    QByteArray top = c.utf8(0);
    for (int i = 1; i < c.count(); ++i) {
      const QByteArray v = c.utf8(i);
      if (v.compare(top) * Sign > 0) {
        top = v;
        best = i;
      }
    }
  }
  c.setArgumentAs(best, 0);
}

void sysdate(Call& c) { c.set(OracleDate::now()); }

// dbsweep_rownum(statement, reference): 1, 2, 3 ... one more each call of the same reference to
// ROWNUM while the same statement runs.
void rownum(Call& c) {
  thread_local qint64 statement = -1;
  thread_local QHash<qint64, qint64> counts;
  if (c.integer(0) != statement) {
    statement = c.integer(0);
    counts.clear();
  }
  c.set(Value::of(++counts[c.integer(1)]));
}

void systimestamp(Call& c) {
  const qint64 micros =
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
          .count();
  const QDateTime now = QDateTime::fromMSecsSinceEpoch(micros / 1000);
  c.set(now.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss.")) +
        QString::number(micros % 1000000).rightJustified(6, u'0'));
}

template <void (*F)(Call&)> void entry(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  try {
    Call call(ctx, argc, argv);
    F(call);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

struct Function {
  const char* name;
  int args; // -1: any number, checked by the function
  void (*call)(sqlite3_context*, int, sqlite3_value**);
  bool deterministic = true;
};

} // namespace

namespace OracleFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings) {
  static const Function functions[] = {
      {"NVL2", 3, entry<nvl2>},
      {"DECODE", -1, entry<decode>},
      {"UPPER", 1, entry<mapCase<upperOf>>},
      {"LOWER", 1, entry<mapCase<lowerOf>>},
      {"SUBSTR", 2, entry<substr>},
      {"SUBSTR", 3, entry<substr>},
      {"INSTR", 2, entry<instr>},
      {"INSTR", 3, entry<instr>},
      {"INSTR", 4, entry<instr>},
      {"LENGTH", 1, entry<length>},
      {"LPAD", 2, entry<pad<true>>},
      {"LPAD", 3, entry<pad<true>>},
      {"RPAD", 2, entry<pad<false>>},
      {"RPAD", 3, entry<pad<false>>},
      {"TRIM", 1, entry<trim<true, true>>},
      {"TRIM", 2, entry<trim<true, true>>},
      {"LTRIM", 1, entry<trim<true, false>>},
      {"LTRIM", 2, entry<trim<true, false>>},
      {"RTRIM", 1, entry<trim<false, true>>},
      {"RTRIM", 2, entry<trim<false, true>>},
      {"REPLACE", 2, entry<replace>},
      {"REPLACE", 3, entry<replace>},
      {"TO_CHAR", 1, entry<toChar>},
      {"TO_CHAR", 2, entry<toChar>},
      {"CONCAT", -1, entry<concat>},
      {"TO_DATE", 1, entry<toDate>},
      {"TO_DATE", 2, entry<toDate>},
      {"TO_NUMBER", 1, entry<toNumber>},
      {"TO_NUMBER", 2, entry<toNumber>},
      {"TRUNC", 1, entry<truncOrRound<false>>},
      {"TRUNC", 2, entry<truncOrRound<false>>},
      {"ROUND", 1, entry<truncOrRound<true>>},
      {"ROUND", 2, entry<truncOrRound<true>>},
      {"ADD_MONTHS", 2, entry<addMonths>},
      {"MONTHS_BETWEEN", 2, entry<monthsBetween>},
      {"LAST_DAY", 1, entry<lastDay>},
      {"dbsweep_extract", 2, entry<extract>},
      {"MOD", 2, entry<mod>},
      {"ABS", 1, entry<abs>},
      {"dbsweep_plus", 2, entry<plus>},
      {"dbsweep_minus", 2, entry<minus>},
      {"dbsweep_times", 2, entry<numeric<OracleNumber::multiply>>},
      {"dbsweep_divide", 2, entry<numeric<OracleNumber::divide>>},
      {"dbsweep_negate", 1, entry<negate>},
      {"dbsweep_compared", 2, entry<compared>},
      {"dbsweep_single_row", 2, entry<singleRow>},
      {"GREATEST", -1, entry<extreme<1>>},
      {"LEAST", -1, entry<extreme<-1>>},
      {"SYSTIMESTAMP", 0, entry<systimestamp>, false},
      {"dbsweep_sysdate", 0, entry<sysdate>, false},
      {"dbsweep_rownum", 2, entry<rownum>, false},
  };
  for (const Function& f : functions)
    sqlite3_create_function_v2(db, f.name, f.args,
                               SQLITE_UTF8 | (f.deterministic ? SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS : 0),
                               const_cast<SessionSettings*>(settings), f.call, nullptr, nullptr, nullptr);
}

} // namespace OracleFunctions
