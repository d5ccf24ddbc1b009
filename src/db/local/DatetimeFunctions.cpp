#include "db/local/DatetimeFunctions.h"

#include "db/local/FunctionCall.h"
#include "db/local/OracleTimestamp.h"

#include <variant>

namespace {

using FunctionCall::Call;
using FunctionCall::entry;
using FunctionCall::Function;
using OracleDateTime::DateTime;
using OracleNumber::Value;
using OracleTimestamp::DaySecond;
using OracleTimestamp::Timestamp;
using OracleTimestamp::YearMonth;

// What an operand of datetime arithmetic holds; numbers and other texts are none of these.
using Temporal = std::variant<DateTime, Timestamp, DaySecond, YearMonth>;

std::optional<Temporal> temporalOf(const Call& c, int i) {
  if (const auto d = c.storedDate(i))
    return *d;
  if (c.isNumber(i))
    return std::nullopt;
  if (const auto v = OracleTimestamp::read(c.text(i)))
    return std::visit([](const auto& x) { return Temporal(x); }, *v);
  return std::nullopt;
}

QLatin1StringView typeName(const Temporal& t) {
  static const char* names[] = {"DATE", "TIMESTAMP", "INTERVAL DAY TO SECOND", "INTERVAL YEAR TO MONTH"};
  return QLatin1StringView(names[t.index()]);
}

OraError notNumber(const Temporal& t) {
  return OraError(932, QStringLiteral("inconsistent datatypes: expected NUMBER got %1").arg(typeName(t)));
}

void set(Call& c, const Temporal& t) {
  if (const auto* d = std::get_if<DateTime>(&t))
    return c.set(*d);
  std::visit(
      [&](const auto& x) {
        if constexpr (!std::is_same_v<std::decay_t<decltype(x)>, DateTime>)
          c.set(OracleTimestamp::text(x));
      },
      t);
}

// A moment moved by an interval: a DATE stays a DATE, a TIMESTAMP a TIMESTAMP.
std::optional<Temporal> moved(const Temporal& moment, const Temporal& interval, int sign) {
  return std::visit(
      [&](const auto& m, const auto& i) -> std::optional<Temporal> {
        using M = std::decay_t<decltype(m)>;
        using I = std::decay_t<decltype(i)>;
        constexpr bool movable = std::is_same_v<M, DateTime> || std::is_same_v<M, Timestamp>;
        constexpr bool shift = std::is_same_v<I, DaySecond> || std::is_same_v<I, YearMonth>;
        if constexpr (movable && shift)
          return Temporal(OracleTimestamp::moved(m, i, sign));
        else if constexpr (std::is_same_v<M, I> && !movable)
          return Temporal(OracleTimestamp::sum(m, i, sign));
        else
          return std::nullopt;
      },
      moment, interval);
}

Timestamp asTimestamp(const Temporal& t) {
  if (const auto* d = std::get_if<DateTime>(&t))
    return OracleTimestamp::fromDate(*d);
  return std::get<Timestamp>(t);
}

bool isMoment(const Temporal& t) { return std::holds_alternative<DateTime>(t) || std::holds_alternative<Timestamp>(t); }

// A number of days added to a DATE or TIMESTAMP gives a DATE.
DateTime dateOf(const Temporal& t) {
  if (const auto* d = std::get_if<DateTime>(&t))
    return *d;
  return OracleTimestamp::toDate(std::get<Timestamp>(t));
}

void plus(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const auto a = temporalOf(c, 0);
  const auto b = temporalOf(c, 1);
  if (a && b) {
    if (std::holds_alternative<DateTime>(*a) && std::holds_alternative<DateTime>(*b))
      throw OraError(975, QStringLiteral("date + date not allowed"));
    auto sum = moved(*a, *b, 1);
    if (!sum && isMoment(*b))
      sum = moved(*b, *a, 1);
    if (!sum)
      OracleTimestamp::badArithmetic();
    return set(c, *sum);
  }
  if (a || b) {
    const Temporal& t = a ? *a : *b;
    if (!isMoment(t))
      OracleTimestamp::badArithmetic();
    return c.set(OracleDateTime::addDays(dateOf(t), c.number(a ? 1 : 0).toDouble()));
  }
  c.set(OracleNumber::add(c.number(0), c.number(1)));
}

void minus(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const auto a = temporalOf(c, 0);
  const auto b = temporalOf(c, 1);
  if (a && b) {
    if (std::holds_alternative<DateTime>(*a) && std::holds_alternative<DateTime>(*b)) {
      const qint64 seconds = OracleDateTime::secondsBetween(std::get<DateTime>(*b), std::get<DateTime>(*a));
      constexpr qint64 day = 86400;
      return c.set(seconds % day == 0 ? Value::of(seconds / day)
                                      : OracleNumber::divide(Value::of(seconds), Value::of(day)));
    }
    if (isMoment(*a) && isMoment(*b))
      return c.set(OracleTimestamp::text(OracleTimestamp::between(asTimestamp(*a), asTimestamp(*b))));
    const auto difference = moved(*a, *b, -1);
    if (!difference)
      OracleTimestamp::badArithmetic();
    return set(c, *difference);
  }
  if (a) {
    if (!isMoment(*a))
      OracleTimestamp::badArithmetic();
    return c.set(OracleDateTime::addDays(dateOf(*a), -c.number(1).toDouble()));
  }
  if (b)
    throw notNumber(*b);
  c.set(OracleNumber::add(c.number(0), OracleNumber::negate(c.number(1))));
}

// Numbers only, but for an interval scaled by a number.
template <bool Dividing> void product(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const auto a = temporalOf(c, 0);
  const auto b = temporalOf(c, 1);
  const auto scaled = [&](const Temporal& t, const Value& factor) {
    if (const auto* d = std::get_if<DaySecond>(&t))
      return c.set(OracleTimestamp::text(OracleTimestamp::scaled(*d, factor, Dividing)));
    if (const auto* y = std::get_if<YearMonth>(&t))
      return c.set(OracleTimestamp::text(OracleTimestamp::scaled(*y, factor, Dividing)));
    throw notNumber(t);
  };
  if (a && !b)
    return scaled(*a, c.number(1));
  if (b && !a && !Dividing)
    return scaled(*b, c.number(0));
  if (a || b)
    throw notNumber(b ? *b : *a);
  c.set(Dividing ? OracleNumber::divide(c.number(0), c.number(1)) : OracleNumber::multiply(c.number(0), c.number(1)));
}

void negate(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  if (const auto t = temporalOf(c, 0)) {
    if (const auto* d = std::get_if<DaySecond>(&*t))
      return c.set(OracleTimestamp::text(DaySecond{-d->nanos, d->dayDigits, d->fractionDigits}));
    if (const auto* y = std::get_if<YearMonth>(&*t))
      return c.set(OracleTimestamp::text(YearMonth{-y->months, y->yearDigits}));
    throw notNumber(*t);
  }
  c.set(OracleNumber::negate(c.number(0)));
}

// EXTRACT(field FROM value): a DATE has a year, month and day but, to EXTRACT, no hour, minute
// or second (ORA-30076); a TIMESTAMP has all of them, an interval those of its kind.
void extract(Call& c) {
  if (c.isNull(1))
    return c.setNull();
  const QString field = c.text(0);
  const auto t = temporalOf(c, 1);
  const Temporal value = t ? *t : Temporal(c.date(1));
  const auto invalid = [] { return OraError(30076, QStringLiteral("invalid extract field for extract source")); };
  if (const auto* y = std::get_if<YearMonth>(&value)) {
    if (field != u"YEAR" && field != u"MONTH")
      throw invalid();
    const qint64 sign = y->months < 0 ? -1 : 1;
    return c.set(Value::of(field == u"YEAR" ? y->months / 12 : sign * (sign * y->months % 12)));
  }
  if (const auto* d = std::get_if<DaySecond>(&value)) {
    const OracleTimestamp::Nanos second = 1000000000;
    const OracleTimestamp::Nanos n = d->nanos;
    if (field == u"DAY")
      return c.set(Value::of(qint64(n / (86400 * second))));
    if (field == u"HOUR")
      return c.set(Value::of(qint64(n / (3600 * second) % 24)));
    if (field == u"MINUTE")
      return c.set(Value::of(qint64(n / (60 * second) % 60)));
    if (field == u"SECOND")
      return c.set(OracleNumber::divide(Value::of(qint64(n % (60 * second))), Value::of(qint64(second))));
    throw invalid();
  }
  const bool timestamp = std::holds_alternative<Timestamp>(value);
  const DateTime at = timestamp ? std::get<Timestamp>(value).at : std::get<DateTime>(value);
  if (field == u"YEAR")
    return c.set(Value::of(qint64(at.date.year())));
  if (field == u"MONTH")
    return c.set(Value::of(qint64(at.date.month())));
  if (field == u"DAY")
    return c.set(Value::of(qint64(at.date.day())));
  if (!timestamp)
    throw invalid();
  // A zone kept as an offset: its hours and minutes carry its sign, and it names no region.
  if (field.startsWith(u"TIMEZONE_")) {
    const auto zone = std::get<Timestamp>(value).zoneMinutes;
    if (!zone)
      throw invalid();
    if (field == u"TIMEZONE_HOUR")
      return c.set(Value::of(qint64(*zone / 60)));
    if (field == u"TIMEZONE_MINUTE")
      return c.set(Value::of(qint64(*zone % 60)));
    if (field == u"TIMEZONE_REGION" || field == u"TIMEZONE_ABBR")
      return c.set(QStringLiteral("UNKNOWN"));
    throw invalid();
  }
  if (field == u"HOUR")
    return c.set(Value::of(qint64(at.seconds / 3600)));
  if (field == u"MINUTE")
    return c.set(Value::of(qint64(at.seconds / 60 % 60)));
  if (field == u"SECOND")
    return c.set(OracleNumber::add(Value::of(qint64(at.seconds % 60)),
                                   OracleNumber::divide(Value::of(qint64(at.nanos)), Value::of(qint64(1000000000)))));
  throw invalid();
}

// dbsweep_as_number(value): the side of a comparison with a number literal, which converts a
// text and refuses a DATE, TIMESTAMP or interval.
void asNumber(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  if (c.isNumber(0))
    return c.setArgument(0);
  if (const auto t = temporalOf(c, 0))
    throw OraError(932, QStringLiteral("inconsistent datatypes: expected %1 got NUMBER").arg(typeName(*t)));
  c.set(c.number(0));
}

// dbsweep_compare(a, b): below, at or above zero as a is less than, equal to or more than b, in
// time order for moments and in length for intervals; moments and intervals of different kinds
// do not compare (ORA-00932).
void compare(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const auto a = temporalOf(c, 0);
  const auto b = temporalOf(c, 1);
  const auto sign = [&](auto x, auto y) { c.set(Value::of(qint64(x < y ? -1 : x > y ? 1 : 0))); };
  if (a && b && isMoment(*a) && isMoment(*b))
    return sign(OracleTimestamp::between(asTimestamp(*a), asTimestamp(*b)).nanos, OracleTimestamp::Nanos(0));
  if (a && b && a->index() == b->index()) {
    if (const auto* d = std::get_if<DaySecond>(&*a))
      return sign(d->nanos, std::get<DaySecond>(*b).nanos);
    return sign(std::get<YearMonth>(*a).months, std::get<YearMonth>(*b).months);
  }
  if (a || b)
    throw OraError(
        932, QStringLiteral("inconsistent datatypes: expected %1 got %2")
                 .arg(a ? typeName(*a) : QLatin1StringView("CHAR"), b ? typeName(*b) : QLatin1StringView("CHAR")));
  if (c.isNumber(0) || c.isNumber(1))
    return c.set(Value::of(qint64(OracleNumber::compare(c.number(0), c.number(1)))));
  c.set(Value::of(qint64(c.utf8(0).compare(c.utf8(1)))));
}

// TO_TIMESTAMP(text [, model]): without a model, in the form the session prints timestamps.
void toTimestamp(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const QString model = c.count() == 2 ? c.text(1) : QStringLiteral("YYYY/MM/DD HH24:MI:SS.FF");
  c.set(OracleTimestamp::text(Timestamp{OracleDateTime::parse(c.text(0), model, QDate::currentDate()), 9, {}}));
}

void numToDsInterval(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.set(OracleTimestamp::text(OracleTimestamp::daySecondOf(c.number(0), c.text(1))));
}

void numToYmInterval(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.set(OracleTimestamp::text(OracleTimestamp::yearMonthOf(c.number(0), c.text(1))));
}

// TO_DSINTERVAL('D HH:MI:SS[.FF]') and TO_YMINTERVAL('Y-M'): an interval of the widest type.
void toDsInterval(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  auto d = std::get<DaySecond>(OracleTimestamp::intervalLiteral(c.text(0), QStringLiteral("DAY"), 9,
                                                                QStringLiteral("SECOND"), 9));
  d.dayDigits = 9;
  c.set(OracleTimestamp::text(d));
}

void toYmInterval(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(OracleTimestamp::text(OracleTimestamp::intervalLiteral(c.text(0), QStringLiteral("YEAR"), 9,
                                                               QStringLiteral("MONTH"), -1)));
}

// dbsweep_systimestamp(statement, zoned): the moment of the statement's first call, with the
// session's time zone (SYSTIMESTAMP, CURRENT_TIMESTAMP) or without (LOCALTIMESTAMP).
void systimestamp(Call& c) {
  thread_local qint64 statement = -1;
  thread_local OracleTimestamp::Timestamp moment;
  if (c.integer(0) != statement) {
    statement = c.integer(0);
    moment = OracleTimestamp::now();
  }
  OracleTimestamp::Timestamp t = moment;
  if (!c.integer(1))
    t.zoneMinutes.reset();
  c.set(OracleTimestamp::text(t));
}

} // namespace

namespace DatetimeFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings) {
  static const Function functions[] = {
      {"dbsweep_plus", 2, entry<plus>},
      {"dbsweep_minus", 2, entry<minus>},
      {"dbsweep_times", 2, entry<product<false>>},
      {"dbsweep_divide", 2, entry<product<true>>},
      {"dbsweep_negate", 1, entry<negate>},
      {"dbsweep_extract", 2, entry<extract>},
      {"dbsweep_as_number", 1, entry<asNumber>},
      {"dbsweep_compare", 2, entry<compare>},
      {"TO_TIMESTAMP", 1, entry<toTimestamp>},
      {"TO_TIMESTAMP", 2, entry<toTimestamp>},
      {"NUMTODSINTERVAL", 2, entry<numToDsInterval>},
      {"NUMTOYMINTERVAL", 2, entry<numToYmInterval>},
      {"TO_DSINTERVAL", 1, entry<toDsInterval>},
      {"TO_YMINTERVAL", 1, entry<toYmInterval>},
      {"dbsweep_systimestamp", 2, entry<systimestamp>, false},
  };
  FunctionCall::registerAll(db, settings, functions);
}

} // namespace DatetimeFunctions
