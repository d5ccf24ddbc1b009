#include "db/local/ValueFunctions.h"

#include "db/local/FunctionCall.h"

#include <array>

namespace {

using FunctionCall::Call;
using FunctionCall::entry;
using FunctionCall::Function;
using OracleNumber::Decimal;
using OracleNumber::Value;

OraError outOfRange(qint64 v) { return OraError(1428, QStringLiteral("argument '%1' is out of range").arg(v)); }

// REMAINDER(n2, n1): n2 - n1 * N, N the integer nearest n2 / n1, the even one of two as near.
void remainder(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const Decimal n2 = Decimal::from(c.number(0));
  const Decimal n1 = Decimal::from(c.number(1));
  const Decimal quotient = n2.dividedBy(n1, 42);
  Decimal nearest = quotient.rounded(0);
  const Decimal fraction = quotient.plus(quotient.truncated(0).negated());
  const Decimal half = Decimal::from(Value::of(0.5));
  const bool tie = fraction.compare(half) == 0 || fraction.compare(half.negated()) == 0;
  const QByteArray whole = nearest.integerDigits();
  if (tie && !whole.isEmpty() && (whole.back() - '0') % 2 == 1)
    nearest = quotient.truncated(0);
  c.set(n2.plus(n1.times(nearest).negated()).value());
}

void bitAnd(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.set(Value::of(c.integer(0) & c.integer(1)));
}

// NEXT_DAY(date, day): the first such weekday after the date, at the same time of day.
void nextDay(Call& c) {
  if (c.anyNull())
    return c.setNull();
  static const std::array<const char*, 7> days = {"MONDAY", "TUESDAY",  "WEDNESDAY", "THURSDAY",
                                                  "FRIDAY", "SATURDAY", "SUNDAY"};
  const QString name = c.text(1).trimmed().toUpper();
  int wanted = 0;
  for (int d = 0; d < 7; ++d)
    if (name == QLatin1StringView(days[size_t(d)]) || name == QLatin1StringView(days[size_t(d)]).left(3))
      wanted = d + 1;
  if (wanted == 0)
    throw OraError(1846, QStringLiteral("not a valid day of the week"));
  OracleDateTime::DateTime d = c.date(0);
  const int ahead = (wanted - d.date.dayOfWeek() + 7) % 7;
  d.date = d.date.addDays(ahead == 0 ? 7 : ahead);
  if (d.date.year() > 9999)
    throw OraError(1841, QStringLiteral("(full) year must be between -4713 and +9999, and not be 0"));
  c.set(d);
}

// NULLIF(a, b): NULL when they are equal, else a; a number and a text are no match for Oracle
// but an error.
void nullif(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  if (c.isNull(1))
    return c.setArgument(0);
  if (c.isNumber(0) != c.isNumber(1))
    throw OraError(932, QStringLiteral("inconsistent datatypes: expected %1 got %2")
                            .arg(c.isNumber(0) ? QStringLiteral("NUMBER") : QStringLiteral("CHAR"),
                                 c.isNumber(1) ? QStringLiteral("NUMBER") : QStringLiteral("CHAR")));
  const bool equal = c.isNumber(0) ? OracleNumber::compare(c.number(0), c.number(1)) == 0 : c.utf8(0) == c.utf8(1);
  if (equal)
    return c.setNull();
  c.setArgument(0);
}

// dbsweep_row_count(n): a count of rows to skip or fetch, as OFFSET and FETCH take it: its
// fraction cut off, none below zero.
void rowCount(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(Value::of(qMax<qint64>(0, c.integer(0))));
}

// LNNVL(condition): true when the condition is false or unknown.
void lnnvl(Call& c) { c.set(Value::of(qint64(c.isNull(0) || c.integer(0) == 0 ? 1 : 0))); }

// A value's bytes as Oracle stores it, with its type code: NUMBER in base 100 (Typ=2), DATE in
// seven bytes (Typ=12), TIMESTAMP in eleven (Typ=180, seven without a fraction), text in UTF-8
// (Typ=1).
std::pair<int, QByteArray> internalForm(const Call& c, int i) {
  if (c.isNumber(i)) {
    const Decimal d = Decimal::from(c.number(i));
    if (d.isZero())
      return {2, QByteArray(1, char(128))};
    // Digits in pairs aligned on the decimal point.
    QByteArray digits = d.digits();
    int point = d.point();
    if (point % 2 != 0) {
      digits.prepend('0');
      ++point;
    }
    if (digits.size() % 2 != 0)
      digits.append('0');
    const int exponent = point / 2 - 1;
    QByteArray out(1, char(d.isNegative() ? 62 - exponent : 193 + exponent));
    for (qsizetype k = 0; k < digits.size(); k += 2) {
      const int pair = (digits[k] - '0') * 10 + (digits[k + 1] - '0');
      out += char(d.isNegative() ? 101 - pair : pair + 1);
    }
    if (d.isNegative() && out.size() < 21)
      out += char(102);
    return {2, out};
  }
  const auto dateBytes = [](const OracleDateTime::DateTime& d) {
    QByteArray out;
    for (int b : {d.date.year() / 100 + 100, d.date.year() % 100 + 100, d.date.month(), d.date.day(),
                  d.seconds / 3600 + 1, d.seconds / 60 % 60 + 1, d.seconds % 60 + 1})
      out += char(b);
    return out;
  };
  if (const auto d = c.storedDate(i))
    return {12, dateBytes(*d)};
  if (const auto t = c.storedTimestamp(i)) {
    QByteArray out = dateBytes(t->at);
    if (t->at.nanos != 0)
      for (int shift = 24; shift >= 0; shift -= 8)
        out += char((t->at.nanos >> shift) & 0xFF);
    return {180, out};
  }
  return {1, c.utf8(i)};
}

// DUMP(value [, format [, start [, length]]]): 8 octal, 10 decimal, 16 hexadecimal, 17 single
// characters; 1000 more names the character set. Fixed-length text (a CHAR column, a text
// literal) has type code 96, which only the statement's text tells.
template <bool FixedLength> void dump(Call& c) {
  if (c.count() < 1 || c.count() > 4)
    throw OraError(909, QStringLiteral("invalid number of arguments"));
  if (c.isNull(0))
    return c.set(QStringLiteral("NULL"));
  const qint64 format = c.count() > 1 && !c.isNull(1) ? c.integer(1) : 10;
  const int base = int(format % 1000);
  if (base != 8 && base != 10 && base != 16 && base != 17)
    throw outOfRange(format);
  const auto [form, bytes] = internalForm(c, 0);
  const int type = FixedLength && form == 1 ? 96 : form;
  const qint64 start = c.count() > 2 && !c.isNull(2) ? c.integer(2) : 1;
  const qint64 length = c.count() > 3 && !c.isNull(3) ? c.integer(3) : bytes.size();
  const qint64 from = start < 0 ? bytes.size() + start : start - 1;
  QStringList shown;
  for (qint64 k = qMax<qint64>(0, from); k < bytes.size() && k < from + length; ++k) {
    const uchar b = uchar(bytes[k]);
    if (base == 17)
      shown << (b >= 0x20 && b < 0x7F ? QString(QChar(b))
                : b < 0x20            ? QStringLiteral("^") + QChar(b + 64)
                                      : QString::number(b, 16));
    else
      shown << QString::number(b, base);
  }
  QString out = QStringLiteral("Typ=%1 Len=%2").arg(type).arg(bytes.size());
  if (format >= 1000 && form == 1)
    out += QStringLiteral(" CharacterSet=AL32UTF8");
  c.set(out + QStringLiteral(": ") + shown.join(u','));
}

void vsize(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(Value::of(qint64(internalForm(c, 0).second.size())));
}

// ORA_HASH(value [, max_bucket [, seed]]): a bucket from 0 to max_bucket (4294967295 unless
// given), the same for the same value and seed. FNV-1a over the value's text; Oracle's own
// function gives other buckets.
void oraHash(Call& c) {
  if (c.count() < 1 || c.count() > 3)
    throw OraError(909, QStringLiteral("invalid number of arguments"));
  if (c.isNull(0))
    return c.setNull();
  const qint64 buckets = c.count() > 1 ? c.integer(1) : 4294967295LL;
  const qint64 seed = c.count() > 2 ? c.integer(2) : 0;
  if (buckets < 0 || buckets > 4294967295LL)
    throw outOfRange(buckets);
  if (seed < 0 || seed > 4294967295LL)
    throw outOfRange(seed);
  quint64 h = 14695981039346656037ULL ^ quint64(seed);
  for (const char b : internalForm(c, 0).second) {
    h ^= uchar(b);
    h *= 1099511628211ULL;
  }
  c.set(Value::of(qint64((h ^ (h >> 32)) % (quint64(buckets) + 1))));
}

} // namespace

namespace ValueFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings) {
  static const Function functions[] = {
      {"REMAINDER", 2, entry<remainder>}, {"BITAND", 2, entry<bitAnd>},     {"NEXT_DAY", 2, entry<nextDay>},
      {"NULLIF", 2, entry<nullif>},       {"LNNVL", 1, entry<lnnvl>},       {"DUMP", -1, entry<dump<false>>},
      {"dbsweep_dump_char", -1, entry<dump<true>>},
      {"VSIZE", 1, entry<vsize>},         {"ORA_HASH", -1, entry<oraHash>}, {"dbsweep_row_count", 1, entry<rowCount>},
  };
  FunctionCall::registerAll(db, settings, functions);
}

} // namespace ValueFunctions
