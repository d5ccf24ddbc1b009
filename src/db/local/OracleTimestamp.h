#pragma once

#include "db/local/OracleDateTime.h"
#include "db/local/OracleNumber.h"

#include <QString>

#include <optional>
#include <variant>

// Oracle's TIMESTAMP and INTERVAL values, kept as text the way the session prints them, as DATEs
// are: "2024/01/31 10:00:00.500000000" (with " +09:00" for SYSTIMESTAMP's time zone),
// "+000000001 00:00:00.000000" for an INTERVAL DAY TO SECOND, "+01-06" for an INTERVAL YEAR TO
// MONTH. The width of each part is the precision of the value's type. Errors are raised as
// OraError with Oracle's numbers.
namespace OracleTimestamp {

// Nanoseconds: as many as 999999999 days of them, beyond 64 bits.
using Nanos = __int128;

struct Timestamp {
  OracleDateTime::DateTime at;
  int precision = 9; // digits of the fraction of a second
  std::optional<int> zoneMinutes;
};

struct DaySecond {
  Nanos nanos = 0; // signed
  int dayDigits = 2;
  int fractionDigits = 6;
};

struct YearMonth {
  qint64 months = 0; // signed
  int yearDigits = 2;
};

using Value = std::variant<Timestamp, DaySecond, YearMonth>;

// Which of the three a text is, if any.
std::optional<Value> read(QStringView text);
QString text(const Timestamp& t);
QString text(const DaySecond& d);
QString text(const YearMonth& y);
QString text(const Value& v);
// A value as Oracle prints it: an interval's text above is made for sorting, not for reading.
QString shown(const QString& text);
inline bool isCarriedInterval(QByteArrayView utf8) { return !utf8.isEmpty() && utf8[0] == '\x1f'; }

// A time zone written as an offset, [+|-]HH[:MI]: its minutes east of UTC; none for other text,
// ORA-01874 beyond the hours a zone can have.
std::optional<int> offsetMinutes(QStringView text);
QString offsetText(int minutes);
// TIMESTAMP 'YYYY-MM-DD HH24:MI:SS[.FF]', the ANSI literal.
Timestamp literal(QStringView text);
// INTERVAL 'text' leading[(precision)] [TO trailing[(fraction)]]: the qualifier's words in upper
// case, a precision of -1 where none is written.
Value intervalLiteral(QStringView text, const QString& leading, int leadingPrecision, const QString& trailing,
                      int fractionPrecision);
// NUMTODSINTERVAL(n, unit) and NUMTOYMINTERVAL(n, unit).
DaySecond daySecondOf(const OracleNumber::Value& n, QStringView unit);
YearMonth yearMonthOf(const OracleNumber::Value& n, QStringView unit);

Timestamp now();
// The timestamp with fraction digits of a second, rounded to them.
Timestamp withPrecision(const Timestamp& t, int fraction);
// Minutes east of UTC of the session's time zone at a moment.
int sessionZoneMinutes(const OracleDateTime::DateTime& d);
Timestamp fromDate(const OracleDateTime::DateTime& d);
// The DATE a TIMESTAMP becomes where a DATE is wanted, its fraction rounded away.
OracleDateTime::DateTime toDate(const Timestamp& t);

// Datetime arithmetic as Oracle's table of it has it: a moment moved by an interval stays of its
// type (a DATE stays a DATE), two moments give an INTERVAL DAY TO SECOND, two intervals of one
// kind add up. Anything else is ORA-30081.
Timestamp moved(const Timestamp& t, const DaySecond& d, int sign);
OracleDateTime::DateTime moved(const OracleDateTime::DateTime& t, const DaySecond& d, int sign);
Timestamp moved(const Timestamp& t, const YearMonth& y, int sign);
OracleDateTime::DateTime moved(const OracleDateTime::DateTime& t, const YearMonth& y, int sign);
DaySecond between(const Timestamp& later, const Timestamp& earlier);
DaySecond sum(const DaySecond& a, const DaySecond& b, int sign);
YearMonth sum(const YearMonth& a, const YearMonth& b, int sign);
DaySecond scaled(const DaySecond& d, const OracleNumber::Value& factor, bool dividing);
YearMonth scaled(const YearMonth& y, const OracleNumber::Value& factor, bool dividing);

[[noreturn]] void badArithmetic();

} // namespace OracleTimestamp
