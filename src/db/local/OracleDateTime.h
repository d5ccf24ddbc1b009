#pragma once

#include <QDate>
#include <QString>

#include <optional>

// Oracle's DATE arithmetic and datetime format models, on the stored text form of
// OracleDate.h. Dates are kept as a day and the seconds into it, free of time zones: a DATE has
// none, and a local QDateTime would skip the hour a clock change skips. Errors are raised as
// OraError with Oracle's numbers.
namespace OracleDateTime {

struct DateTime {
  QDate date;
  int seconds = 0; // since midnight
  int nanos = 0;   // into the second: a TIMESTAMP's fraction, which a DATE has not
};

// The session's date format, in which the stored form is written.
inline constexpr QStringView DefaultModel = u"YYYY/MM/DD HH24:MI:SS";

// The stored form "YYYY/MM/DD HH24:MI:SS", also with the time or its end left out.
std::optional<DateTime> parseStored(QStringView text);
QString stored(const DateTime& d);
// TO_CHAR(date) without a model: the stored form, without the time when it is midnight.
QString defaultText(const DateTime& d);

// TO_CHAR(date, model) and TO_DATE(text, model). Elements left out of the text take Oracle's
// defaults: the current year and month of today, the first day, midnight. FF without its digits
// prints fraction digits of the second.
QString format(const DateTime& d, QStringView model, int fraction = 9);
DateTime parse(QStringView text, QStringView model, QDate today);

// TRUNC and ROUND of a date to a unit such as 'DD', 'MM', 'YYYY', 'HH24'.
DateTime truncate(const DateTime& d, QStringView unit);
DateTime round(const DateTime& d, QStringView unit);

DateTime addMonths(const DateTime& d, qint64 months);
// DATE + n: n days, a fraction of one being its hours, minutes and seconds to the nearest second.
DateTime addDays(const DateTime& d, double days);
// The seconds from one to the other, negative when to is the earlier.
qint64 secondsBetween(const DateTime& from, const DateTime& to);
// MONTHS_BETWEEN: whole months, and the seconds beyond them in months of 31 days.
struct MonthsApart {
  qint64 whole = 0;
  qint64 seconds = 0;
};
MonthsApart monthsBetween(const DateTime& later, const DateTime& earlier);
DateTime lastDay(const DateTime& d);

} // namespace OracleDateTime
