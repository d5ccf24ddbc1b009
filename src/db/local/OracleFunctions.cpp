#include "db/local/OracleFunctions.h"

#include "db/local/DatetimeFunctions.h"
#include "db/local/FunctionCall.h"
#include "db/local/OracleDate.h"
#include "db/local/RegexpFunctions.h"
#include "db/local/TextFunctions.h"
#include "db/local/ValueFunctions.h"

#include <QHash>

#include <algorithm>

namespace {

using FunctionCall::Call;
using FunctionCall::Chars;
using FunctionCall::entry;
using FunctionCall::fromChars;
using FunctionCall::Function;
using OracleDateTime::DateTime;
using OracleNumber::Decimal;
using OracleNumber::Value;

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
      match = OracleNumber::compare(*number, c.number(k)) == 0;
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
  const auto part = c.substringRange(s.size());
  if (!part)
    return c.setNull();
  c.set(fromChars(s.constData() + part->first, part->second));
}

void instr(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.setPosition(c.chars(0), c.chars(1));
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
  if (const auto t = c.storedTimestamp(0))
    return c.set(model ? OracleDateTime::format(t->at, c.text(1), t->precision) : c.text(0));
  c.set(model ? OracleNumber::format(c.number(0), c.text(1)) : c.text(0));
}

// || and CONCAT: a NULL side counts as no text, so only two NULLs give NULL. Numbers and dates
// join as TO_CHAR prints them. The engine's dbsweep_concat joins any number of values so, as a
// step of SYS_CONNECT_BY_PATH joins its path, separator and value, once per row of a walk.
void concatAll(Call& c) {
  QByteArray joined;
  for (int i = 0; i < c.count(); ++i) {
    if (c.isNull(i))
      continue;
    const auto date = c.mayBeDate(i) ? c.storedDate(i) : std::nullopt;
    if (date)
      joined += c.session().dateText(*date).toUtf8();
    else if (const auto text = c.textView(i); text && !OracleTimestamp::isCarriedInterval(*text))
      joined += *text; // as SQLite holds it: no copy on the way
    else
      joined += c.utf8(i);
  }
  c.setUtf8(joined);
}

void concat(Call& c) {
  if (c.count() != 2)
    throw wrongArgumentCount();
  concatAll(c);
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
  if (const auto d = c.storedDateOrTimestamp(0)) {
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
  // In decimal: a fraction of a month has 40 digits as Oracle's has.
  const OracleDateTime::MonthsApart m = OracleDateTime::monthsBetween(c.date(0), c.date(1));
  c.set(
      OracleNumber::add(Value::of(m.whole), OracleNumber::divide(Value::of(m.seconds), Value::of(qint64(31 * 86400)))));
}

void lastDay(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(OracleDateTime::lastDay(c.date(0)));
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
  const Decimal dm = Decimal::from(m);
  const Decimal dn = Decimal::from(n);
  if (dn.isZero())
    return c.set(m);
  // In decimal, m - n * TRUNC(m / n), so that MOD(0.3, 0.1) is 0 and not 0.0999….
  const Decimal whole = dm.dividedBy(dn, 42).truncated(0);
  c.set(dm.plus(dn.times(whole).negated()).value());
}

void abs(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  const Value v = c.number(0);
  c.set(v.isNegative() ? OracleNumber::negate(v) : v);
}

// In the type of the first argument: numbers compare as numbers, DATEs as DATEs (a text read in
// the session's format), anything else as text.
template <int Sign> void extreme(Call& c) {
  if (c.count() == 0)
    throw wrongArgumentCount();
  if (c.anyNull())
    return c.setNull();
  int best = 0;
  if (const auto first = c.storedDate(0)) {
    DateTime top = *first;
    for (int i = 1; i < c.count(); ++i) {
      const DateTime d = c.date(i);
      if (OracleDateTime::secondsBetween(top, d) * Sign > 0) {
        top = d;
        best = i;
      }
    }
    return c.set(top);
  }
  if (c.isNumber(0)) {
    Value top = c.number(0);
    for (int i = 1; i < c.count(); ++i) {
      const Value v = c.number(i);
      if (OracleNumber::compare(v, top) * Sign > 0) {
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
      {"dbsweep_concat", -1, entry<concatAll>},
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
      {"MOD", 2, entry<mod>},
      {"ABS", 1, entry<abs>},
      {"dbsweep_compared", 2, entry<compared>},
      {"dbsweep_single_row", 2, entry<singleRow>},
      {"GREATEST", -1, entry<extreme<1>>},
      {"LEAST", -1, entry<extreme<-1>>},
      {"dbsweep_sysdate", 0, entry<sysdate>, false},
      {"dbsweep_rownum", 2, entry<rownum>, false},
  };
  FunctionCall::registerAll(db, settings, functions);
  DatetimeFunctions::registerAll(db, settings);
  TextFunctions::registerAll(db, settings);
  RegexpFunctions::registerAll(db, settings);
  ValueFunctions::registerAll(db, settings);
}

} // namespace OracleFunctions
