#include "db/local/ZoneFunctions.h"

#include "db/local/FunctionCall.h"
#include "db/local/OracleTimestamp.h"

#include <QDateTime>
#include <QTimeZone>

namespace {

using FunctionCall::Call;
using FunctionCall::entry;
using OracleTimestamp::Timestamp;

constexpr OracleTimestamp::Nanos MinuteNanos = 60LL * 1000000000LL;

OraError regionNotFound() { return OraError(1882, QStringLiteral("timezone region not found")); }

bool isRegion(const QString& name) { return QTimeZone(name.toUtf8()).isValid(); }

// A TIMESTAMP argument, a DATE taken as one.
Timestamp timestampOf(const Call& c, int i) {
  if (const auto t = c.storedTimestamp(i))
    return *t;
  if (const auto d = c.storedDate(i))
    return OracleTimestamp::fromDate(*d);
  throw OraError(932, QStringLiteral("inconsistent datatypes: expected TIMESTAMP got %1")
                          .arg(c.isNumber(i) ? QStringLiteral("NUMBER") : QStringLiteral("CHAR")));
}

// FROM_TZ(timestamp, '[+|-]HH:MI'): the timestamp in that zone. A region would print as its
// offset here, not by its name as Oracle prints it, so it is refused.
void fromTz(Call& c) {
  if (c.anyNull())
    return c.setNull();
  Timestamp t = timestampOf(c, 0);
  if (t.zoneMinutes)
    throw OraError(932, QStringLiteral("inconsistent datatypes: expected TIMESTAMP got TIMESTAMP WITH TIME ZONE"));
  const QString zone = c.text(1);
  t.zoneMinutes = OracleTimestamp::offsetMinutes(zone);
  if (!t.zoneMinutes)
    throw isRegion(zone) ? OraError(3001, QStringLiteral("unimplemented feature")) : regionNotFound();
  c.set(OracleTimestamp::text(t));
}

// SYS_EXTRACT_UTC(timestamp with time zone): the UTC time, without a zone; a timestamp without
// one is in the session's zone.
void sysExtractUtc(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  Timestamp t = timestampOf(c, 0);
  const int zone = t.zoneMinutes.value_or(OracleTimestamp::sessionZoneMinutes(t.at));
  t.at = OracleTimestamp::moved(t.at, OracleTimestamp::DaySecond{zone * MinuteNanos, 9, 9}, -1);
  t.zoneMinutes.reset();
  c.set(OracleTimestamp::text(t));
}

// TZ_OFFSET(zone): '+HH:MI' for an offset or a region (at this moment, as Oracle gives it).
void tzOffset(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  const QString zone = c.text(0);
  if (const auto minutes = OracleTimestamp::offsetMinutes(zone))
    return c.set(OracleTimestamp::offsetText(*minutes));
  if (!isRegion(zone))
    throw regionNotFound();
  c.set(OracleTimestamp::offsetText(QTimeZone(zone.toUtf8()).offsetFromUtc(QDateTime::currentDateTimeUtc()) / 60));
}

// SESSIONTIMEZONE: the session's zone is the machine's, given as its offset now.
void sessionTimeZone(Call& c) {
  c.set(OracleTimestamp::offsetText(QDateTime::currentDateTime().offsetFromUtc() / 60));
}

} // namespace

namespace ZoneFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings) {
  static const FunctionCall::Function functions[] = {
      {"FROM_TZ", 2, entry<fromTz>},
      {"SYS_EXTRACT_UTC", 1, entry<sysExtractUtc>},
      {"TZ_OFFSET", 1, entry<tzOffset>},
      {"dbsweep_sessiontimezone", 0, entry<sessionTimeZone>, false},
  };
  FunctionCall::registerAll(db, settings, functions);
}

} // namespace ZoneFunctions
