#include "db/local/OracleTimestamp.h"

#include "db/OraError.h"

#include <QDateTime>
#include <QHash>

#include <chrono>
#include <cmath>

namespace OracleTimestamp {

using OracleDateTime::DateTime;

namespace {

constexpr Nanos Second = 1000000000;
constexpr Nanos Day = 86400 * Second;
constexpr Nanos MostDays = 1000000000 * Day;
constexpr qint64 Powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

OraError invalidInterval() { return OraError(1867, QStringLiteral("the interval is invalid")); }
OraError precisionTooSmall() {
  return OraError(1873, QStringLiteral("the leading precision of the interval is too small"));
}
OraError monthInvalid() { return OraError(1839, QStringLiteral("date not valid for month specified")); }

// Reads digits from text at i: their value and how many there were.
std::pair<qint64, int> digitsAt(QStringView text, qsizetype& i) {
  qint64 value = 0;
  int count = 0;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i, ++count)
    value = count < 18 ? value * 10 + text[i].digitValue() : value;
  return {value, count};
}

// A count of nanoseconds rounded to the digits of a fraction of a second.
Nanos roundedTo(Nanos nanos, int fraction) {
  const Nanos unit = Powers[9 - fraction];
  const Nanos half = unit / 2;
  return nanos >= 0 ? (nanos + half) / unit * unit : -((-nanos + half) / unit * unit);
}

Nanos nanosOf(const DateTime& d) { return (d.date.toJulianDay() * 86400 + d.seconds) * Second + d.nanos; }

DateTime dateTimeOf(Nanos nanos) {
  const qint64 days = qint64(nanos >= 0 ? nanos / Day : -((-nanos + Day - 1) / Day));
  const Nanos rest = nanos - days * Day;
  const DateTime d{QDate::fromJulianDay(days), int(rest / Second), int(rest % Second)};
  if (!d.date.isValid() || d.date.year() < 1 || d.date.year() > 9999)
    throw OraError(1841, QStringLiteral("(full) year must be between -4713 and +9999, and not be 0"));
  return d;
}

Nanos utcNanos(const Timestamp& t) {
  return nanosOf(t.at) - t.zoneMinutes.value_or(sessionZoneMinutes(t.at)) * 60 * Second;
}

DateTime shiftedMonths(const DateTime& d, qint64 months) {
  const qint64 index = qint64(d.date.year()) * 12 + (d.date.month() - 1) + months;
  if (index < 12 || index >= 10000 * 12)
    throw OraError(1841, QStringLiteral("(full) year must be between -4713 and +9999, and not be 0"));
  const QDate first(int(index / 12), int(index % 12) + 1, 1);
  // Unlike ADD_MONTHS, an interval keeps the day, and a day the month lacks is an error.
  if (d.date.day() > first.daysInMonth())
    throw monthInvalid();
  return {QDate(first.year(), first.month(), d.date.day()), d.seconds, d.nanos};
}

std::optional<Timestamp> readTimestamp(QStringView text) {
  if (text.size() < 21 || text[19] != u'.')
    return std::nullopt;
  const auto at = OracleDateTime::parseStored(text.first(19));
  if (!at)
    return std::nullopt;
  qsizetype i = 20;
  const auto [fraction, digits] = digitsAt(text, i);
  if (digits < 1 || digits > 9)
    return std::nullopt;
  Timestamp t{{at->date, at->seconds, int(fraction * Powers[9 - digits])}, digits, std::nullopt};
  if (i == text.size())
    return t;
  if (text.size() - i != 7 || text[i] != u' ' || (text[i + 1] != u'+' && text[i + 1] != u'-') || text[i + 4] != u':')
    return std::nullopt;
  const int hours = text.mid(i + 2, 2).toInt();
  const int minutes = text.mid(i + 5, 2).toInt();
  t.zoneMinutes = (text[i + 1] == u'-' ? -1 : 1) * (hours * 60 + minutes);
  return t;
}

// "+DD HH:MI:SS[.FF]" and "+YY-MM".
std::optional<Value> readInterval(QStringView text) {
  if (text.size() < 4 || (text[0] != u'+' && text[0] != u'-'))
    return std::nullopt;
  const int sign = text[0] == u'-' ? -1 : 1;
  qsizetype i = 1;
  const auto [lead, leadDigits] = digitsAt(text, i);
  if (leadDigits == 0 || i >= text.size())
    return std::nullopt;
  if (text[i] == u'-') {
    ++i;
    const auto [months, monthDigits] = digitsAt(text, i);
    if (monthDigits != 2 || i != text.size() || months > 11)
      return std::nullopt;
    return YearMonth{sign * (lead * 12 + months), leadDigits};
  }
  if (text[i] != u' ' || text.size() - i < 9 || text[i + 3] != u':' || text[i + 6] != u':')
    return std::nullopt;
  const Nanos hours = text.mid(i + 1, 2).toInt();
  const Nanos minutes = text.mid(i + 4, 2).toInt();
  const Nanos seconds = text.mid(i + 7, 2).toInt();
  i += 9;
  DaySecond d{0, leadDigits, 0};
  Nanos fraction = 0;
  if (i < text.size()) {
    if (text[i] != u'.')
      return std::nullopt;
    ++i;
    const auto [f, fractionDigits] = digitsAt(text, i);
    if (fractionDigits < 1 || fractionDigits > 9 || i != text.size())
      return std::nullopt;
    fraction = f * Powers[9 - fractionDigits];
    d.fractionDigits = fractionDigits;
  }
  d.nanos = sign * ((((Nanos(lead) * 24 + hours) * 60 + minutes) * 60 + seconds) * Second + fraction);
  return d;
}

QString signedDigits(qint64 n, int width, bool negative) {
  return (negative ? u'-' : u'+') + QString::number(n).rightJustified(width, u'0');
}

QString twoDigits(qint64 n) { return QString::number(n).rightJustified(2, u'0'); }

const QStringList& dayFields() {
  static const QStringList fields = {QStringLiteral("DAY"), QStringLiteral("HOUR"), QStringLiteral("MINUTE"),
                                     QStringLiteral("SECOND")};
  return fields;
}

// An interval travels through SQLite in a form whose text order is the order of the values, so
// that ORDER BY, MIN and MAX need no help: a mark no user text starts with, D or Y, the value
// offset to be positive in a fixed number of digits, and the digits of its type's precisions.
constexpr QChar CarriedMark = u'\x1f';
constexpr qint64 MostMonths = 1000000000LL * 12;

QString fixedDigits(qint64 n, int width) { return QString::number(n).rightJustified(width, u'0'); }

std::optional<Value> readCarried(QStringView text) {
  bool ok = false;
  if (text.size() == 28 && text[1] == u'D') {
    const Nanos high = text.mid(2, 12).toLongLong(&ok);
    const Nanos low = ok ? text.mid(14, 12).toLongLong(&ok) : 0;
    if (ok)
      return DaySecond{high * 1000000000000LL + low - MostDays, text[26].digitValue(), text[27].digitValue()};
  }
  if (text.size() == 15 && text[1] == u'Y') {
    const qint64 months = text.mid(2, 12).toLongLong(&ok);
    if (ok)
      return YearMonth{months - MostMonths, text[14].digitValue()};
  }
  return std::nullopt;
}

QString shownDaySecond(const DaySecond& d) {
  const Nanos magnitude = d.nanos < 0 ? -d.nanos : d.nanos;
  const qint64 seconds = qint64(magnitude / Second);
  QString out = signedDigits(seconds / 86400, d.dayDigits, d.nanos < 0) + u' ' + twoDigits(seconds / 3600 % 24) + u':' +
                twoDigits(seconds / 60 % 60) + u':' + twoDigits(seconds % 60);
  if (d.fractionDigits > 0)
    out += u'.' + QString::number(qint64(magnitude % Second)).rightJustified(9, u'0').left(d.fractionDigits);
  return out;
}

QString shownYearMonth(const YearMonth& y) {
  const qint64 magnitude = std::abs(y.months);
  return signedDigits(magnitude / 12, y.yearDigits, y.months < 0) + u'-' + twoDigits(magnitude % 12);
}

} // namespace

std::optional<Value> read(QStringView text) {
  if (text.isEmpty())
    return std::nullopt;
  if (text[0] == CarriedMark)
    return readCarried(text);
  if (text[0] == u'+' || text[0] == u'-')
    return readInterval(text);
  if (const auto t = readTimestamp(text))
    return *t;
  return std::nullopt;
}

QString text(const Timestamp& t) {
  QString out = OracleDateTime::stored(t.at);
  if (t.precision > 0)
    out += u'.' + QString::number(t.at.nanos).rightJustified(9, u'0').left(t.precision);
  if (t.zoneMinutes)
    out += u' ' + offsetText(*t.zoneMinutes);
  return out;
}

QString text(const DaySecond& d) {
  const Nanos offset = d.nanos + MostDays;
  return CarriedMark + QStringLiteral("D") + fixedDigits(qint64(offset / 1000000000000LL), 12) +
         fixedDigits(qint64(offset % 1000000000000LL), 12) + QString::number(d.dayDigits) +
         QString::number(d.fractionDigits);
}

QString text(const YearMonth& y) {
  return CarriedMark + QStringLiteral("Y") + fixedDigits(y.months + MostMonths, 12) + QString::number(y.yearDigits);
}

QString shown(const QString& text) {
  if (text.isEmpty() || text[0] != CarriedMark)
    return text;
  const auto v = readCarried(text);
  if (!v)
    return text;
  if (const auto* d = std::get_if<DaySecond>(&*v))
    return shownDaySecond(*d);
  return shownYearMonth(std::get<YearMonth>(*v));
}

QString text(const Value& v) {
  return std::visit([](const auto& x) { return text(x); }, v);
}

std::optional<int> offsetMinutes(QStringView text) {
  text = text.trimmed();
  if (text.isEmpty() || (text[0] != u'+' && text[0] != u'-'))
    return std::nullopt;
  const QStringView offset = text.sliced(1);
  const qsizetype colon = offset.indexOf(u':');
  bool hoursOk = false, minutesOk = colon < 0;
  const int hours = offset.first(colon < 0 ? offset.size() : colon).toInt(&hoursOk);
  const int minutes = colon < 0 ? 0 : offset.sliced(colon + 1).toInt(&minutesOk);
  if (!hoursOk || !minutesOk || hours > 14 || minutes > 59)
    throw OraError(1874, QStringLiteral("time zone hour must be between -15 and 15"));
  return (text[0] == u'-' ? -1 : 1) * (hours * 60 + minutes);
}

QString offsetText(int minutes) {
  const int z = std::abs(minutes);
  return signedDigits(z / 60, 2, minutes < 0) + u':' + twoDigits(z % 60);
}

Timestamp literal(QStringView text) {
  text = text.trimmed();
  // A time zone as an offset, "+09:00", makes a TIMESTAMP WITH TIME ZONE.
  std::optional<int> zone;
  const qsizetype blank = text.lastIndexOf(u' ');
  if (blank > 0 && blank + 1 < text.size() && (text[blank + 1] == u'+' || text[blank + 1] == u'-')) {
    zone = offsetMinutes(text.sliced(blank + 1));
    text = text.first(blank);
  }
  return {OracleDateTime::parse(text, u"YYYY-MM-DD HH24:MI:SS.FF", QDate::currentDate()), 9, zone};
}

Value intervalLiteral(QStringView text, const QString& leading, int leadingPrecision, const QString& trailing,
                      int fractionPrecision) {
  QStringView s = text.trimmed();
  int sign = 1;
  if (!s.isEmpty() && (s[0] == u'-' || s[0] == u'+')) {
    sign = s[0] == u'-' ? -1 : 1;
    s = s.sliced(1);
  }
  const int precision = leadingPrecision < 0 ? 2 : leadingPrecision;
  if (precision > 9 || fractionPrecision > 9)
    throw OraError(30088, QStringLiteral("datetime/interval precision is out of range"));
  qsizetype i = 0;
  const auto [first, firstDigits] = digitsAt(s, i);
  if (firstDigits == 0)
    throw invalidInterval();
  if (firstDigits > precision)
    throw precisionTooSmall();

  if (leading == u"YEAR" || leading == u"MONTH") {
    qint64 months = leading == u"YEAR" ? first * 12 : first;
    if (trailing == u"MONTH" && leading == u"YEAR") {
      if (i >= s.size() || s[i] != u'-')
        throw invalidInterval();
      ++i;
      const auto [m, mDigits] = digitsAt(s, i);
      if (mDigits == 0)
        throw invalidInterval();
      if (m > 11)
        throw OraError(1843, QStringLiteral("not a valid month"));
      months += m;
    } else if (!trailing.isEmpty()) {
      throw OraError(30089, QStringLiteral("missing or invalid <datetime field>"));
    }
    if (i != s.size())
      throw invalidInterval();
    return YearMonth{sign * months, leading == u"YEAR" ? precision : 2};
  }

  const qsizetype from = dayFields().indexOf(leading);
  const qsizetype to = trailing.isEmpty() ? from : dayFields().indexOf(trailing);
  if (from < 0 || to < from || (to == from && !trailing.isEmpty()))
    throw OraError(30089, QStringLiteral("missing or invalid <datetime field>"));
  static const Nanos units[] = {Day, 3600 * Second, 60 * Second, Second};
  static const qint64 limits[] = {0, 23, 59, 59};
  Nanos nanos = first * units[from];
  for (qsizetype field = from + 1; field <= to; ++field) {
    const QChar separator = field == 1 ? u' ' : u':';
    if (i >= s.size() || s[i] != separator)
      throw invalidInterval();
    ++i;
    const auto [v, digits] = digitsAt(s, i);
    if (digits == 0 || digits > 2)
      throw invalidInterval();
    if (v > limits[field])
      throw field == 1 ? OraError(1850, QStringLiteral("hour must be between 0 and 23"))
      : field == 2     ? OraError(1851, QStringLiteral("minutes must be between 0 and 59"))
                       : OraError(1852, QStringLiteral("seconds must be between 0 and 59"));
    nanos += v * units[field];
  }
  const bool seconds = to == 3;
  const int fraction = seconds ? (fractionPrecision < 0 ? 6 : fractionPrecision) : 0;
  if (seconds && i < s.size() && s[i] == u'.') {
    ++i;
    const qsizetype start = i;
    digitsAt(s, i);
    const QString digits = s.mid(start, i - start).toString().left(9).leftJustified(9, u'0');
    nanos += roundedTo(digits.toLongLong(), fraction);
  }
  if (i != s.size())
    throw invalidInterval();
  return DaySecond{sign * nanos, from == 0 ? precision : 2, fraction};
}

DaySecond daySecondOf(const OracleNumber::Value& n, QStringView unit) {
  static const QHash<QString, qint64> units = {{QStringLiteral("DAY"), 86400},
                                               {QStringLiteral("HOUR"), 3600},
                                               {QStringLiteral("MINUTE"), 60},
                                               {QStringLiteral("SECOND"), 1}};
  const qint64 scale = units.value(unit.trimmed().toString().toUpper()) * 1000000000;
  if (scale == 0)
    throw OraError(1760, QStringLiteral("illegal argument for function"));
  // Exact to the nanosecond: the number's digits shifted, not a double's.
  const OracleNumber::Decimal exact =
      OracleNumber::Decimal::from(n).times(OracleNumber::Decimal::from(OracleNumber::Value::of(scale)));
  const OracleNumber::Decimal nanos = exact.rounded(0);
  // Beyond 64 bits is beyond 106751 days, still within the type: through the seconds then.
  const OracleNumber::Value seconds = nanos.shifted(-9).truncated(0).value();
  const OracleNumber::Value rest = nanos.plus(OracleNumber::Decimal::from(seconds).shifted(9).negated()).value();
  if (!seconds.isInteger || Nanos(std::abs(seconds.integer)) * Second >= MostDays)
    throw precisionTooSmall();
  return {Nanos(seconds.integer) * Second + rest.integer, 9, 9};
}

YearMonth yearMonthOf(const OracleNumber::Value& n, QStringView unit) {
  const QString u = unit.trimmed().toString().toUpper();
  if (u != u"YEAR" && u != u"MONTH")
    throw OraError(1760, QStringLiteral("illegal argument for function"));
  const double months = n.toDouble() * (u == u"YEAR" ? 12 : 1);
  if (!(std::fabs(months) < 1.2e10))
    throw precisionTooSmall();
  return {qint64(std::trunc(months)), 9};
}

Timestamp now() {
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  const qint64 micros = std::chrono::duration_cast<std::chrono::microseconds>(since).count();
  const QDateTime local = QDateTime::fromMSecsSinceEpoch(micros / 1000);
  const DateTime at{local.date(), local.time().msecsSinceStartOfDay() / 1000, int(micros % 1000000) * 1000};
  return {at, 6, local.offsetFromUtc() / 60};
}

Timestamp withPrecision(const Timestamp& t, int fraction) {
  return {dateTimeOf(roundedTo(nanosOf(t.at), fraction)), fraction, t.zoneMinutes};
}

int sessionZoneMinutes(const DateTime& d) {
  return QDateTime(d.date, QTime(0, 0).addSecs(d.seconds)).offsetFromUtc() / 60;
}

Timestamp fromDate(const DateTime& d) { return {{d.date, d.seconds, 0}, 0, std::nullopt}; }

DateTime toDate(const Timestamp& t) {
  const DateTime d = dateTimeOf(roundedTo(nanosOf(t.at), 0));
  return {d.date, d.seconds, 0};
}

Timestamp moved(const Timestamp& t, const DaySecond& d, int sign) {
  return withPrecision({dateTimeOf(nanosOf(t.at) + sign * d.nanos), t.precision, t.zoneMinutes}, t.precision);
}

DateTime moved(const DateTime& t, const DaySecond& d, int sign) {
  const DateTime out = dateTimeOf(nanosOf({t.date, t.seconds, 0}) + sign * d.nanos);
  return {out.date, out.seconds, 0};
}

Timestamp moved(const Timestamp& t, const YearMonth& y, int sign) {
  return {shiftedMonths(t.at, sign * y.months), t.precision, t.zoneMinutes};
}

DateTime moved(const DateTime& t, const YearMonth& y, int sign) { return shiftedMonths(t, sign * y.months); }

DaySecond between(const Timestamp& later, const Timestamp& earlier) {
  const bool zoned = later.zoneMinutes || earlier.zoneMinutes;
  const qint64 nanos = zoned ? utcNanos(later) - utcNanos(earlier) : nanosOf(later.at) - nanosOf(earlier.at);
  return {nanos, 9, qMax(later.precision, earlier.precision)};
}

DaySecond sum(const DaySecond& a, const DaySecond& b, int sign) {
  return {a.nanos + sign * b.nanos, 9, qMax(a.fractionDigits, b.fractionDigits)};
}

YearMonth sum(const YearMonth& a, const YearMonth& b, int sign) { return {a.months + sign * b.months, 9}; }

DaySecond scaled(const DaySecond& d, const OracleNumber::Value& factor, bool dividing) {
  const double f = factor.toDouble();
  if (dividing && f == 0)
    throw OraError(1476, QStringLiteral("divisor is equal to zero"));
  const long double nanos = dividing ? (long double)(d.nanos) / f : (long double)(d.nanos) * f;
  if (!(std::fabs(nanos) < (long double)(MostDays)))
    throw precisionTooSmall();
  return {roundedTo(Nanos(std::roundl(nanos)), d.fractionDigits), 9, d.fractionDigits};
}

YearMonth scaled(const YearMonth& y, const OracleNumber::Value& factor, bool dividing) {
  const double f = factor.toDouble();
  if (dividing && f == 0)
    throw OraError(1476, QStringLiteral("divisor is equal to zero"));
  const double months = dividing ? double(y.months) / f : double(y.months) * f;
  if (!(std::fabs(months) < 1.2e10))
    throw precisionTooSmall();
  return {qint64(std::trunc(months)), 9};
}

void badArithmetic() { throw OraError(30081, QStringLiteral("invalid data type for datetime/interval arithmetic")); }

} // namespace OracleTimestamp
