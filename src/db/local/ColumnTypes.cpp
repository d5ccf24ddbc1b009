#include "db/local/ColumnTypes.h"

#include "db/OraError.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OracleNumber.h"
#include "db/local/OracleTimestamp.h"
#include "db/local/SessionSettings.h"
#include "db/local/SqlTranslator.h"
#include "db/local/SqliteNumber.h"

namespace ColumnTypes {

namespace {

using OracleNumber::Decimal;
using OracleNumber::Value;

bool isText(const QString& type) {
  return type == u"VARCHAR2" || type == u"CHAR" || type == u"NVARCHAR2" || type == u"NCHAR";
}

// Character semantics reserve four bytes a character (see OracleType); national types count
// characters always.
bool countsCharacters(const Column& c) {
  return c.dataType.startsWith(u'N') || (c.charLength > 0 && c.dataLength == 4 * c.charLength);
}

bool rounds(const Column& c) { return c.dataType == u"NUMBER" && !c.scale.isNull(); }

QString text(sqlite3_value* v) {
  return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)), sqlite3_value_bytes(v));
}

// dbsweep_fits(value, type, maximum, characters, precision, scale, owner, table, column)
const SessionSettings& session(sqlite3_context* ctx) {
  return *static_cast<const SessionSettings*>(sqlite3_user_data(ctx));
}

// A table keeps a number as SQLite's integer or double, so a value of more digits than those
// hold (1/3 to 40 digits, an integer of 20) is refused rather than stored cut short.
void checkNumber(sqlite3_context* ctx, sqlite3_value** argv) {
  const Value v = SqliteNumber::read(argv[0], session(ctx).wideNumbers);
  const bool precise = sqlite3_value_type(argv[4]) != SQLITE_NULL;
  const bool scaled = sqlite3_value_type(argv[5]) != SQLITE_NULL;
  const int scale = scaled ? sqlite3_value_int(argv[5]) : 0;
  const Decimal d = precise || scaled ? Decimal::from(v).rounded(scale) : Decimal::from(v);
  if (d.value().isWide())
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  if (!precise)
    return;
  const int precision = sqlite3_value_int(argv[4]);
  if (!d.isZero() && d.point() > precision - scale)
    throw OraError(1438, QStringLiteral("value larger than specified precision allowed for this column"));
}

// An interval travels in a form of the engine's own, which a text column would keep as it is;
// the engine has no INTERVAL columns to take one either.
void checkText(sqlite3_value** argv) {
  const QString value = text(argv[0]);
  if (value.startsWith(u'\x1f'))
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  const qint64 actual = sqlite3_value_int(argv[3]) ? qint64(value.toUcs4().size()) : qint64(value.toUtf8().size());
  const qint64 maximum = sqlite3_value_int64(argv[2]);
  if (actual > maximum)
    throw OraError(12899, QStringLiteral("value too large for column \"%1\".\"%2\".\"%3\" (actual: %4, maximum: %5)")
                              .arg(text(argv[6]), text(argv[7]), text(argv[8]))
                              .arg(actual)
                              .arg(maximum));
}

void checkDate(sqlite3_context* ctx, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) != SQLITE_TEXT)
    throw OraError(932, QStringLiteral("inconsistent datatypes: expected DATE got NUMBER"));
  session(ctx).date(text(argv[0]));
}

bool isTimestamp(const QString& type) { return type.startsWith(u"TIMESTAMP"); }
bool isZoned(const QString& type) { return type.endsWith(u" WITH TIME ZONE"); }

// A value written to a TIMESTAMP column: a TIMESTAMP, a DATE, or a text in the session's form of
// a timestamp; a number is none (ORA-00932).
OracleTimestamp::Timestamp timestampOf(sqlite3_value* v) {
  if (sqlite3_value_type(v) != SQLITE_TEXT)
    throw OraError(932, QStringLiteral("inconsistent datatypes: expected TIMESTAMP got NUMBER"));
  const QString value = text(v);
  if (const auto d = OracleDateTime::parseStored(value))
    return OracleTimestamp::fromDate(*d);
  if (const auto t = OracleTimestamp::read(value); t && std::holds_alternative<OracleTimestamp::Timestamp>(*t))
    return std::get<OracleTimestamp::Timestamp>(*t);
  if (OracleTimestamp::read(value))
    throw OraError(932, QStringLiteral("inconsistent datatypes: expected TIMESTAMP got INTERVAL"));
  return {OracleDateTime::parse(value, u"YYYY/MM/DD HH24:MI:SS.FF", QDate::currentDate()), 9, std::nullopt};
}

void fits(sqlite3_context* ctx, int, sqlite3_value** argv) {
  try {
    const int type = sqlite3_value_type(argv[0]);
    if (type != SQLITE_NULL && !(type == SQLITE_TEXT && sqlite3_value_bytes(argv[0]) == 0)) {
      const QString dataType = text(argv[1]);
      if (dataType == u"NUMBER" || dataType == u"FLOAT")
        checkNumber(ctx, argv);
      else if (dataType == u"DATE")
        checkDate(ctx, argv);
      else if (dataType == u"TIMESTAMP")
        timestampOf(argv[0]);
      else
        checkText(argv);
    }
    sqlite3_result_int(ctx, 1);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

// dbsweep_stored(value, scale): a number rounded to the column's scale.
void storedNumber(sqlite3_context* ctx, int, sqlite3_value** argv) {
  try {
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
      sqlite3_result_null(ctx);
      return;
    }
    WideNumbers& wide = session(ctx).wideNumbers;
    SqliteNumber::result(
        ctx, Decimal::from(SqliteNumber::read(argv[0], wide)).rounded(sqlite3_value_int(argv[1])).value(), wide);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

// dbsweep_stored_date(value): a text written to a DATE in the stored form the column keeps.
void storedDate(sqlite3_context* ctx, int, sqlite3_value** argv) {
  try {
    if (sqlite3_value_type(argv[0]) != SQLITE_TEXT) {
      sqlite3_result_value(ctx, argv[0]);
      return;
    }
    const QByteArray out = OracleDateTime::stored(session(ctx).date(text(argv[0]))).toUtf8();
    sqlite3_result_text(ctx, out.constData(), int(out.size()), SQLITE_TRANSIENT);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

// dbsweep_stored_timestamp(value, fraction, zoned): a value written to a TIMESTAMP column in the
// form the column keeps: its fraction of a second rounded to the column's digits, with a time
// zone only in a column WITH TIME ZONE, the session's where the value had none.
void storedTimestamp(sqlite3_context* ctx, int, sqlite3_value** argv) {
  try {
    if (sqlite3_value_type(argv[0]) != SQLITE_TEXT) {
      sqlite3_result_value(ctx, argv[0]);
      return;
    }
    OracleTimestamp::Timestamp t = OracleTimestamp::withPrecision(timestampOf(argv[0]), sqlite3_value_int(argv[1]));
    if (!sqlite3_value_int(argv[2]))
      t.zoneMinutes.reset();
    else if (!t.zoneMinutes)
      t.zoneMinutes = OracleTimestamp::sessionZoneMinutes(t.at);
    const QByteArray out = OracleTimestamp::text(t).toUtf8();
    sqlite3_result_text(ctx, out.constData(), int(out.size()), SQLITE_TRANSIENT);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

// dbsweep_padded(value, maximum, characters): a CHAR value with blanks up to the column's length.
void padded(sqlite3_context* ctx, int, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  const QString value = text(argv[0]);
  const qint64 size = sqlite3_value_int(argv[2]) ? qint64(value.toUcs4().size()) : qint64(value.toUtf8().size());
  const QByteArray out = (value + QString(qMax<qint64>(0, sqlite3_value_int64(argv[1]) - size), u' ')).toUtf8();
  sqlite3_result_text(ctx, out.constData(), int(out.size()), SQLITE_TRANSIENT);
}

QString q(const QString& name) { return SqlTranslator::quoteName(name); }
QString literal(const QVariant& v) { return v.isNull() ? QStringLiteral("NULL") : v.toString(); }

} // namespace

QString clauses(const Column& c) {
  const bool text = isText(c.dataType);
  if (!text && c.dataType != u"NUMBER" && c.dataType != u"FLOAT" && c.dataType != u"DATE" && !isTimestamp(c.dataType))
    return {};
  const qint64 maximum = countsCharacters(c) ? c.charLength : c.dataLength;
  QString out =
      QStringLiteral(" CHECK (dbsweep_fits(%1, '%2', %3, %4, %5, %6, %7, %8, %9))")
          .arg(q(c.name), isTimestamp(c.dataType) ? QStringLiteral("TIMESTAMP") : c.dataType)
          .arg(maximum)
          .arg(countsCharacters(c) ? 1 : 0)
          .arg(c.dataType == u"NUMBER" ? literal(c.precision) : QStringLiteral("NULL"), literal(c.scale),
               SqlTranslator::quoteText(c.owner), SqlTranslator::quoteText(c.table), SqlTranslator::quoteText(c.name));
  // Blank-padded comparison: 'A' and 'A  ' are the same CHAR value.
  if (c.dataType.endsWith(QStringLiteral("CHAR")) && !c.dataType.contains(QStringLiteral("VAR")))
    out += QStringLiteral(" COLLATE RTRIM");
  return out;
}

QStringList triggers(const QString& schema, const QString& table, const std::vector<Column>& columns) {
  QStringList sets, changed, names;
  for (const Column& c : columns) {
    QString stored;
    if (rounds(c))
      stored = QStringLiteral("dbsweep_stored(%1, %2)").arg(q(c.name), c.scale.toString());
    else if (c.dataType == u"DATE")
      stored = QStringLiteral("dbsweep_stored_date(%1)").arg(q(c.name));
    else if (isTimestamp(c.dataType))
      stored = QStringLiteral("dbsweep_stored_timestamp(%1, %2, %3)")
                   .arg(q(c.name), literal(c.scale))
                   .arg(isZoned(c.dataType) ? 1 : 0);
    else if (c.dataType == u"CHAR" || c.dataType == u"NCHAR")
      stored = QStringLiteral("dbsweep_padded(%1, %2, %3)")
                   .arg(q(c.name))
                   .arg(countsCharacters(c) ? c.charLength : c.dataLength)
                   .arg(countsCharacters(c) ? 1 : 0);
    else
      continue;
    sets << q(c.name) + QStringLiteral(" = ") + stored;
    // In binary: the column's own collation holds 'ab' and 'ab  ' equal.
    changed << q(c.name) + QStringLiteral(" IS NOT ") + stored + QStringLiteral(" COLLATE BINARY");
    names << q(c.name);
  }
  if (sets.isEmpty())
    return {};
  const QString body = QStringLiteral("BEGIN UPDATE %1 SET %2 WHERE rowid = NEW.rowid AND (%3); END")
                           .arg(q(table), sets.join(QStringLiteral(", ")), changed.join(QStringLiteral(" OR ")));
  return {QStringLiteral("CREATE TRIGGER %1.%2 AFTER INSERT ON %3 %4")
              .arg(q(schema), q(QStringLiteral("TI$") + table), q(table), body),
          QStringLiteral("CREATE TRIGGER %1.%2 AFTER UPDATE OF %3 ON %4 %5")
              .arg(q(schema), q(QStringLiteral("TU$") + table), names.join(QStringLiteral(", ")), q(table), body)};
}

void registerFunctions(sqlite3* db, const SessionSettings* settings) {
  const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  auto* session = const_cast<SessionSettings*>(settings);
  sqlite3_create_function_v2(db, "dbsweep_fits", 9, flags, session, fits, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "dbsweep_stored", 2, flags, session, storedNumber, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "dbsweep_padded", 3, flags, nullptr, padded, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "dbsweep_stored_date", 1, flags, session, storedDate, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "dbsweep_stored_timestamp", 3, flags, nullptr, storedTimestamp, nullptr, nullptr,
                             nullptr);
}

} // namespace ColumnTypes
