#include "db/local/OracleDateTime.h"

#include "db/OraError.h"

#include <array>
#include <cmath>
#include <vector>

namespace OracleDateTime {

namespace {

constexpr int DaySeconds = 86400;

const std::array<const char*, 12> Months = {"JANUARY", "FEBRUARY", "MARCH",     "APRIL",   "MAY",      "JUNE",
                                            "JULY",    "AUGUST",   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
const std::array<const char*, 7> Days = {"SUNDAY", "MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY", "FRIDAY", "SATURDAY"};
const std::array<const char*, 12> Roman = {"I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX", "X", "XI", "XII"};

// Longest first, so that MONTH is read before MON and HH24 before HH.
const std::array<QStringView, 44> Elements = {
    u"SSSSS", u"SYYYY", u"MONTH", u"RRRR", u"YYYY", u"IYYY", u"HH24", u"HH12", u"A.M.", u"P.M.", u"A.D.",
    u"B.C.",  u"SCC",   u"DAY",   u"DDD",  u"MON",  u"YYY",  u"IYY",  u"RR",   u"YY",   u"IY",   u"IW",
    u"WW",    u"MM",    u"MI",    u"DD",   u"DY",   u"HH",   u"SS",   u"AM",   u"PM",   u"AD",   u"BC",
    u"CC",    u"FF",    u"FM",    u"FX",   u"RM",   u"Q",    u"D",    u"J",    u"W",    u"Y",    u"I"};

OraError error(int number, const char* text) { return OraError(number, QString::fromLatin1(text)); }
OraError notRecognized() { return error(1821, "date format not recognized"); }
OraError yearRange() { return error(1841, "(full) year must be between -4713 and +9999, and not be 0"); }

// One element of a datetime model: a name in upper case with its spelling (which sets the case
// of words such as MON), or a literal (punctuation or quoted text) with an empty name.
struct Element {
  QString name;
  QString text;
  bool quoted = false;
};

std::vector<Element> readModel(QStringView model) {
  std::vector<Element> out;
  qsizetype i = 0;
  while (i < model.size()) {
    const QChar c = model[i];
    if (c == u'"') {
      const qsizetype end = model.indexOf(u'"', i + 1);
      if (end < 0)
        throw notRecognized();
      out.push_back({{}, model.mid(i + 1, end - i - 1).toString(), true});
      i = end + 1;
      continue;
    }
    if (QStringView(u" -/,.;:").contains(c)) {
      out.push_back({{}, QString(c)});
      ++i;
      continue;
    }
    bool found = false;
    for (QStringView name : Elements) {
      if (model.mid(i).startsWith(name, Qt::CaseInsensitive)) {
        out.push_back({name.toString(), model.mid(i, name.size()).toString()});
        i += name.size();
        // FF1 to FF9: the digits of a fraction of a second.
        if (name == u"FF" && i < model.size() && model[i] >= u'1' && model[i] <= u'9')
          out.back().name += model[i++];
        found = true;
        break;
      }
    }
    if (!found)
      throw notRecognized();
  }
  return out;
}

// Oracle spells a word as its element is spelled: "MON" JUN, "Mon" Jun, "mon" jun.
QString spelled(const QString& upper, const QString& spelling) {
  if (spelling.at(0).isLower())
    return upper.toLower();
  if (spelling.size() > 1 && spelling.at(1).isLower())
    return upper.left(1) + upper.mid(1).toLower();
  return upper;
}

int isoYear(QDate d) {
  int year = 0;
  d.weekNumber(&year);
  return year;
}

QDate isoYearStart(int year) {
  const QDate fourth(year, 1, 4);
  return fourth.addDays(1 - fourth.dayOfWeek());
}

// YY takes the current century; RR the one nearest, so that 99 read in 2004 is 1999.
int twoDigitYear(int two, QDate today, bool nearest) {
  const int current = today.year() % 100;
  int century = today.year() / 100 * 100;
  if (nearest && two < 50 && current >= 50)
    century += 100;
  else if (nearest && two >= 50 && current < 50)
    century -= 100;
  return century + two;
}

int sundayFirst(QDate d) { return d.dayOfWeek() % 7 + 1; }

DateTime checked(const DateTime& d) {
  if (!d.date.isValid() || d.date.year() < 1 || d.date.year() > 9999)
    throw yearRange();
  return d;
}

} // namespace

std::optional<DateTime> parseStored(QStringView text) {
  qsizetype i = 0;
  const auto number = [&](int least, int most) -> std::optional<int> {
    int value = 0;
    int digits = 0;
    while (i < text.size() && digits < most && text[i].isDigit() && text[i].unicode() < 128) {
      value = value * 10 + (text[i++].unicode() - '0');
      ++digits;
    }
    return digits >= least ? std::optional(value) : std::nullopt;
  };
  const auto sign = [&](QChar c) { return i < text.size() && text[i] == c ? (++i, true) : false; };
  const auto year = number(4, 4);
  if (!year || !sign(u'/'))
    return std::nullopt;
  const auto month = number(1, 2);
  if (!month || !sign(u'/'))
    return std::nullopt;
  const auto day = number(1, 2);
  if (!day)
    return std::nullopt;
  std::array<int, 3> time{0, 0, 0};
  for (size_t part = 0; part < time.size() && i < text.size(); ++part) {
    if (!sign(part == 0 ? u' ' : u':'))
      return std::nullopt;
    const auto value = number(1, 2);
    if (!value)
      return std::nullopt;
    time[part] = *value;
  }
  const QDate date(*year, *month, *day);
  if (i != text.size() || !date.isValid() || *year < 1 || time[0] > 23 || time[1] > 59 || time[2] > 59)
    return std::nullopt;
  return DateTime{date, time[0] * 3600 + time[1] * 60 + time[2]};
}

QString stored(const DateTime& d) {
  return QStringLiteral("%1/%2/%3 %4:%5:%6")
      .arg(d.date.year(), 4, 10, QChar(u'0'))
      .arg(d.date.month(), 2, 10, QChar(u'0'))
      .arg(d.date.day(), 2, 10, QChar(u'0'))
      .arg(d.seconds / 3600, 2, 10, QChar(u'0'))
      .arg(d.seconds / 60 % 60, 2, 10, QChar(u'0'))
      .arg(d.seconds % 60, 2, 10, QChar(u'0'));
}

QString defaultText(const DateTime& d) { return d.seconds == 0 ? stored(d).left(10) : stored(d); }

QString format(const DateTime& d, QStringView model, int fraction) {
  const QDate date = d.date;
  const int year = date.year();
  const int hour = d.seconds / 3600;
  QString out;
  bool fm = false;
  for (const Element& e : readModel(model)) {
    if (e.name.isEmpty()) {
      out += e.text;
      continue;
    }
    const auto number = [&](qint64 value, int width) {
      out += fm ? QString::number(value) : QString::number(value).rightJustified(width, u'0');
    };
    const auto word = [&](const char* upper, int width) {
      const QString w = spelled(QString::fromLatin1(upper), e.text);
      out += fm ? w : w.leftJustified(width, u' ');
    };
    const QString& n = e.name;
    if (n == u"FM")
      fm = !fm;
    else if (n == u"FX")
      continue;
    else if (n == u"YYYY" || n == u"RRRR")
      number(year, 4);
    else if (n == u"SYYYY") {
      out += u' ';
      number(year, 4);
    } else if (n == u"YYY")
      number(year % 1000, 3);
    else if (n == u"YY" || n == u"RR")
      number(year % 100, 2);
    else if (n == u"Y")
      number(year % 10, 1);
    else if (n == u"IYYY")
      number(isoYear(date), 4);
    else if (n == u"IYY")
      number(isoYear(date) % 1000, 3);
    else if (n == u"IY")
      number(isoYear(date) % 100, 2);
    else if (n == u"I")
      number(isoYear(date) % 10, 1);
    else if (n == u"CC" || n == u"SCC") {
      if (n == u"SCC")
        out += u' ';
      number((year + 99) / 100, 2);
    } else if (n == u"Q")
      number((date.month() + 2) / 3, 1);
    else if (n == u"MM")
      number(date.month(), 2);
    else if (n == u"MON")
      out += spelled(QString::fromLatin1(Months[size_t(date.month() - 1)]).left(3), e.text);
    else if (n == u"MONTH")
      word(Months[size_t(date.month() - 1)], 9);
    else if (n == u"RM")
      word(Roman[size_t(date.month() - 1)], 4);
    else if (n == u"WW")
      number((date.dayOfYear() - 1) / 7 + 1, 2);
    else if (n == u"IW")
      number(date.weekNumber(), 2);
    else if (n == u"W")
      number((date.day() - 1) / 7 + 1, 1);
    else if (n == u"DDD")
      number(date.dayOfYear(), 3);
    else if (n == u"DD")
      number(date.day(), 2);
    else if (n == u"D")
      number(sundayFirst(date), 1);
    else if (n == u"DAY")
      word(Days[size_t(sundayFirst(date) - 1)], 9);
    else if (n == u"DY")
      out += spelled(QString::fromLatin1(Days[size_t(sundayFirst(date) - 1)]).left(3), e.text);
    else if (n == u"J")
      number(date.toJulianDay(), 7);
    else if (n == u"HH" || n == u"HH12")
      number(hour % 12 == 0 ? 12 : hour % 12, 2);
    else if (n == u"HH24")
      number(hour, 2);
    else if (n == u"MI")
      number(d.seconds / 60 % 60, 2);
    else if (n == u"SS")
      number(d.seconds % 60, 2);
    else if (n == u"SSSSS")
      number(d.seconds, 5);
    else if (n.startsWith(u"FF"))
      out += QString::number(d.nanos).rightJustified(9, u'0').left(n.size() > 2 ? n.at(2).digitValue() : fraction);
    else if (n == u"AM" || n == u"PM")
      out += spelled(hour < 12 ? QStringLiteral("AM") : QStringLiteral("PM"), e.text);
    else if (n == u"A.M." || n == u"P.M.")
      out += spelled(hour < 12 ? QStringLiteral("A.M.") : QStringLiteral("P.M."), e.text);
    else if (n == u"AD" || n == u"BC")
      out += spelled(QStringLiteral("AD"), e.text);
    else if (n == u"A.D." || n == u"B.C.")
      out += spelled(QStringLiteral("A.D."), e.text);
  }
  return out;
}

DateTime parse(QStringView text, QStringView model, QDate today) {
  const std::vector<Element> elements = readModel(model);
  for (const Element& e : elements)
    if (e.name == u"CC" || e.name == u"SCC" || e.name == u"Q" || e.name == u"WW" || e.name == u"IW" || e.name == u"W" ||
        e.name.startsWith(u'I'))
      throw error(1820, "format code cannot appear in date input format");

  std::optional<int> year, month, day, hour, minute, second, dayOfYear, julian, daySeconds;
  int nanos = 0;
  std::optional<bool> pm;
  bool twelveHour = false;
  qsizetype i = 0;
  const qsizetype n = text.size();
  const auto skipBlanks = [&] {
    while (i < n && text[i].isSpace())
      ++i;
  };
  const auto digitRun = [&] {
    qsizetype k = i;
    while (k < n && text[k].isDigit() && text[k].unicode() < 128)
      ++k;
    return k - i;
  };
  const auto read = [&](qsizetype most) {
    const qsizetype digits = qMin(digitRun(), most);
    if (digits == 0)
      throw i < n && text[i].isLetter() ? error(1858, "a non-numeric character was found where a numeric was expected")
                                        : error(1861, "literal does not match format string");
    const int value = text.mid(i, digits).toInt();
    i += digits;
    return value;
  };
  const auto word = [&] {
    const qsizetype start = i;
    while (i < n && text[i].isLetter())
      ++i;
    return text.mid(start, i - start).toString().toUpper();
  };
  const auto monthNamed = [&](const QString& w) {
    for (size_t m = 0; m < Months.size(); ++m)
      if (w == QLatin1String(Months[m]) || w == QLatin1String(Months[m]).left(3))
        return int(m + 1);
    throw error(1843, "not a valid month");
  };
  const auto take = [&](QStringView w) {
    if (text.mid(i).startsWith(w, Qt::CaseInsensitive)) {
      i += w.size();
      return true;
    }
    return false;
  };

  for (size_t k = 0; k < elements.size(); ++k) {
    const Element& e = elements[k];
    const QString& name = e.name;
    if (name == u"FM" || name == u"FX")
      continue;
    if (name.isEmpty() && !e.quoted) {
      // Any run of punctuation and blanks in the text stands for the model's punctuation.
      while (i < n && !text[i].isLetterOrNumber())
        ++i;
      continue;
    }
    skipBlanks();
    if (i == n)
      break; // what is left out takes its default
    if (e.quoted) {
      if (!take(e.text))
        throw error(1861, "literal does not match format string");
      continue;
    }
    const bool nextIsNumeric = k + 1 < elements.size() && !elements[k + 1].name.isEmpty();
    if (name == u"YYYY" || name == u"RRRR" || name == u"SYYYY") {
      if (name == u"SYYYY" && take(u"-"))
        throw yearRange();
      const qsizetype digits = digitRun();
      year = read(4);
      if (name == u"RRRR" && digits <= 2)
        year = twoDigitYear(*year, today, true);
    } else if (name == u"YY" || name == u"RR") {
      // A whole year stands where two digits are expected, unless digits of the next element follow.
      const qsizetype run = digitRun();
      if (run > 2 && run <= 4 && !nextIsNumeric) {
        year = read(4);
      } else {
        year = twoDigitYear(read(2), today, name == u"RR");
      }
    } else if (name == u"YYY") {
      year = today.year() / 1000 * 1000 + read(3);
    } else if (name == u"Y") {
      year = today.year() / 10 * 10 + read(1);
    } else if (name == u"MM" || name == u"MON" || name == u"MONTH") {
      if (text[i].isLetter())
        month = monthNamed(word());
      else if (name == u"MM")
        month = read(2);
      else
        throw error(1843, "not a valid month");
      if (*month < 1 || *month > 12)
        throw error(1843, "not a valid month");
    } else if (name == u"RM") {
      const QString w = word();
      const auto it = std::find_if(Roman.begin(), Roman.end(), [&](const char* r) { return w == QLatin1String(r); });
      if (it == Roman.end())
        throw error(1843, "not a valid month");
      month = int(it - Roman.begin()) + 1;
    } else if (name == u"DD") {
      day = read(2);
      if (*day < 1 || *day > 31)
        throw error(1847, "day of month must be between 1 and last day of month");
    } else if (name == u"DDD") {
      dayOfYear = read(3);
    } else if (name == u"D") {
      if (const int d = read(1); d < 1 || d > 7)
        throw error(1846, "not a valid day of the week");
    } else if (name == u"DAY" || name == u"DY") {
      const QString w = word();
      if (std::none_of(Days.begin(), Days.end(),
                       [&](const char* d) { return w == QLatin1String(d) || w == QLatin1String(d).left(3); }))
        throw error(1846, "not a valid day of the week");
    } else if (name == u"J") {
      julian = read(7);
      if (*julian < 1 || *julian > 5373484)
        throw error(1854, "julian date must be between 1 and 5373484");
    } else if (name == u"HH" || name == u"HH12") {
      const int h = read(2);
      if (h < 1 || h > 12)
        throw error(1849, "hour must be between 1 and 12");
      hour = h;
      twelveHour = true;
    } else if (name == u"HH24") {
      hour = read(2);
      if (*hour > 23)
        throw error(1850, "hour must be between 0 and 23");
    } else if (name == u"MI") {
      minute = read(2);
      if (*minute > 59)
        throw error(1851, "minutes must be between 0 and 59");
    } else if (name == u"SS") {
      second = read(2);
      if (*second > 59)
        throw error(1852, "seconds must be between 0 and 59");
    } else if (name == u"SSSSS") {
      daySeconds = read(5);
      if (*daySeconds >= DaySeconds)
        throw error(1853, "seconds in day must be between 0 and 86399");
    } else if (name.startsWith(u"FF")) {
      const qsizetype digits = qMin(digitRun(), qsizetype(name.size() > 2 ? name.at(2).digitValue() : 9));
      nanos = read(digits) * int(std::pow(10, 9 - digits));
    } else if (name == u"AM" || name == u"PM" || name == u"A.M." || name == u"P.M.") {
      if (take(u"A.M.") || take(u"AM"))
        pm = false;
      else if (take(u"P.M.") || take(u"PM"))
        pm = true;
      else
        throw error(1855, "AM/A.M. or PM/P.M. required");
    } else if (name == u"AD" || name == u"BC" || name == u"A.D." || name == u"B.C.") {
      if (!take(u"A.D.") && !take(u"AD"))
        throw yearRange(); // years before Christ are outside what this engine stores
    }
  }
  skipBlanks();
  if (i < n)
    throw error(1830, "date format picture ends before converting entire input string");

  const int y = year.value_or(today.year());
  if (y < 1 || y > 9999)
    throw yearRange();
  QDate date;
  if (julian) {
    date = QDate::fromJulianDay(*julian);
  } else if (dayOfYear) {
    if (*dayOfYear < 1 || *dayOfYear > QDate(y, 1, 1).daysInYear())
      throw error(1848, "day of year must be between 1 and 365 (366 for leap year)");
    date = QDate(y, 1, 1).addDays(*dayOfYear - 1);
  } else {
    const int m = month.value_or(today.month());
    date = QDate(y, m, 1);
    if (day.value_or(1) > date.daysInMonth())
      throw error(1839, "date not valid for month specified");
    date = QDate(y, m, day.value_or(1));
  }
  int seconds = daySeconds.value_or(0);
  if (!daySeconds) {
    int h = hour.value_or(0);
    if (twelveHour)
      h = h % 12 + (pm.value_or(false) ? 12 : 0);
    seconds = h * 3600 + minute.value_or(0) * 60 + second.value_or(0);
  }
  return checked({date, seconds, nanos});
}

namespace {

enum class Unit { Century, Year, IsoYear, Quarter, Month, Week, IsoWeek, MonthWeek, Day, WeekDay, Hour, Minute };

Unit unitOf(QStringView text) {
  const QString u = text.trimmed().toString().toUpper();
  if (u == u"CC" || u == u"SCC")
    return Unit::Century;
  if (u == u"SYYYY" || u == u"YYYY" || u == u"YEAR" || u == u"SYEAR" || u == u"YYY" || u == u"YY" || u == u"Y")
    return Unit::Year;
  if (u == u"IYYY" || u == u"IYY" || u == u"IY" || u == u"I")
    return Unit::IsoYear;
  if (u == u"Q")
    return Unit::Quarter;
  if (u == u"MONTH" || u == u"MON" || u == u"MM" || u == u"RM")
    return Unit::Month;
  if (u == u"WW")
    return Unit::Week;
  if (u == u"IW")
    return Unit::IsoWeek;
  if (u == u"W")
    return Unit::MonthWeek;
  if (u == u"DDD" || u == u"DD" || u == u"J")
    return Unit::Day;
  if (u == u"DAY" || u == u"DY" || u == u"D")
    return Unit::WeekDay;
  if (u == u"HH" || u == u"HH12" || u == u"HH24")
    return Unit::Hour;
  if (u == u"MI")
    return Unit::Minute;
  throw notRecognized();
}

// The start of the unit holding d, and the start of the next one.
std::pair<DateTime, DateTime> span(const DateTime& d, Unit unit) {
  const QDate date = d.date;
  const int y = date.year();
  switch (unit) {
  case Unit::Century: {
    const int first = (y - 1) / 100 * 100 + 1;
    return {{QDate(first, 1, 1)}, {QDate(first + 100, 1, 1)}};
  }
  case Unit::Year: return {{QDate(y, 1, 1)}, {QDate(y + 1, 1, 1)}};
  case Unit::IsoYear: {
    const int iso = isoYear(date);
    return {{isoYearStart(iso)}, {isoYearStart(iso + 1)}};
  }
  case Unit::Quarter: {
    const QDate first(y, (date.month() - 1) / 3 * 3 + 1, 1);
    return {{first}, {first.addMonths(3)}};
  }
  case Unit::Month: {
    const QDate first(y, date.month(), 1);
    return {{first}, {first.addMonths(1)}};
  }
  case Unit::Week: {
    const QDate first = QDate(y, 1, 1).addDays((date.dayOfYear() - 1) / 7 * 7);
    return {{first}, {first.addDays(7)}};
  }
  case Unit::IsoWeek: {
    const QDate first = date.addDays(1 - date.dayOfWeek());
    return {{first}, {first.addDays(7)}};
  }
  case Unit::MonthWeek: {
    const QDate first = QDate(y, date.month(), 1).addDays((date.day() - 1) / 7 * 7);
    return {{first}, {first.addDays(7)}};
  }
  case Unit::WeekDay: {
    const QDate first = date.addDays(-(date.dayOfWeek() % 7));
    return {{first}, {first.addDays(7)}};
  }
  case Unit::Day: return {{date}, {date.addDays(1)}};
  case Unit::Hour: {
    const DateTime first{date, d.seconds / 3600 * 3600};
    return {first,
            first.seconds + 3600 < DaySeconds ? DateTime{date, first.seconds + 3600} : DateTime{date.addDays(1)}};
  }
  case Unit::Minute: {
    const DateTime first{date, d.seconds / 60 * 60};
    return {first, first.seconds + 60 < DaySeconds ? DateTime{date, first.seconds + 60} : DateTime{date.addDays(1)}};
  }
  }
  return {d, d};
}

} // namespace

qint64 secondsBetween(const DateTime& from, const DateTime& to) {
  return (to.date.toJulianDay() - from.date.toJulianDay()) * DaySeconds + (to.seconds - from.seconds);
}

DateTime truncate(const DateTime& d, QStringView unit) { return checked(span(d, unitOf(unit)).first); }

DateTime round(const DateTime& d, QStringView unitText) {
  const Unit unit = unitOf(unitText);
  const auto [start, next] = span(d, unit);
  const QDate date = d.date;
  bool up = false;
  switch (unit) {
  // Oracle's fixed turning points: the first of July, the sixteenth, the year xx51.
  case Unit::Century: up = date.year() >= start.date.year() + 50; break;
  case Unit::Year: up = date.month() >= 7; break;
  case Unit::Quarter: up = (date.month() - 1) % 3 == 2 || ((date.month() - 1) % 3 == 1 && date.day() >= 16); break;
  case Unit::Month: up = date.day() >= 16; break;
  default: up = 2 * secondsBetween(start, d) >= secondsBetween(start, next); break;
  }
  return checked(up ? next : start);
}

DateTime addMonths(const DateTime& d, qint64 months) {
  if (months > 120000 || months < -120000)
    throw yearRange();
  const qint64 index = qint64(d.date.year()) * 12 + (d.date.month() - 1) + months;
  const int year = int(index / 12);
  const int month = int(index % 12) + 1;
  if (index < 12 || year > 9999)
    throw yearRange();
  const int days = QDate(year, month, 1).daysInMonth();
  // The last day of a month maps to the last day of the other, as Oracle does.
  const int day = d.date.day() == d.date.daysInMonth() ? days : qMin(d.date.day(), days);
  return {QDate(year, month, day), d.seconds};
}

DateTime addDays(const DateTime& d, double days) {
  // Beyond ten thousand years every result is out of range; the bound also keeps the seconds
  // within an integer.
  if (!(std::fabs(days) < 4.0e6))
    throw yearRange();
  const qint64 seconds = d.seconds + std::llround(days * DaySeconds);
  const qint64 wholeDays = seconds >= 0 ? seconds / DaySeconds : -((-seconds + DaySeconds - 1) / DaySeconds);
  return checked({d.date.addDays(wholeDays), int(seconds - wholeDays * DaySeconds)});
}

MonthsApart monthsBetween(const DateTime& later, const DateTime& earlier) {
  const QDate a = later.date;
  const QDate b = earlier.date;
  const int months = (a.year() - b.year()) * 12 + (a.month() - b.month());
  if (a.day() == b.day() || (a.day() == a.daysInMonth() && b.day() == b.daysInMonth()))
    return {months, 0};
  // The rest counts in months of 31 days, the time of day included.
  return {months, qint64(a.day() - b.day()) * DaySeconds + (later.seconds - earlier.seconds)};
}

DateTime lastDay(const DateTime& d) { return {QDate(d.date.year(), d.date.month(), d.date.daysInMonth()), d.seconds}; }

} // namespace OracleDateTime
