#include "db/local/CastFunction.h"

#include "db/local/FunctionCall.h"
#include "db/local/OracleTimestamp.h"

namespace {

using FunctionCall::Call;
using OracleNumber::Decimal;

OraError inconsistent(QLatin1StringView expected, QLatin1StringView got) {
  return OraError(932, QStringLiteral("inconsistent datatypes: expected %1 got %2").arg(expected, got));
}

std::optional<int> optionalInteger(const Call& c, int i) {
  return c.isNull(i) ? std::nullopt : std::optional<int>(int(c.integer(i)));
}

// NUMBER(p, s): rounded to the scale; more whole digits than p - s allows is ORA-01438.
void toNumber(Call& c) {
  if (c.storedDateOrTimestamp(0))
    throw inconsistent(QLatin1StringView("NUMBER"), QLatin1StringView("DATE"));
  const OracleNumber::Value v = c.number(0);
  const auto precision = optionalInteger(c, 2);
  if (!precision)
    return c.set(v);
  const int scale = optionalInteger(c, 3).value_or(0);
  const Decimal d = Decimal::from(v).rounded(scale);
  if (!d.isZero() && d.point() > *precision - scale)
    throw OraError(1438, QStringLiteral("value larger than specified precision allowed for this column"));
  c.set(d.value());
}

// VARCHAR2(n) and CHAR(n): the value as TO_CHAR prints it, which must fit in n bytes (ORA-25137);
// CHAR is blank-padded to n.
void toText(Call& c, bool padded) {
  QString text;
  if (c.isNumber(0))
    text = OracleNumber::toText(c.number(0));
  else if (const auto d = c.storedDate(0))
    text = c.session().dateText(*d);
  else
    text = c.text(0);
  const qint64 maximum = optionalInteger(c, 2).value_or(padded ? 1 : 4000);
  const qint64 bytes = text.toUtf8().size();
  if (bytes > maximum)
    throw OraError(25137, QStringLiteral("Data value out of range"));
  if (padded)
    text += QString(qsizetype(maximum - bytes), u' ');
  c.set(text);
}

// DATE from a DATE, a TIMESTAMP (rounded to the second) or a text in the session's form.
void toDate(Call& c) {
  if (const auto d = c.storedDateOrTimestamp(0))
    return c.set(*d);
  if (c.isNumber(0))
    throw inconsistent(QLatin1StringView("DATE"), QLatin1StringView("NUMBER"));
  c.set(c.date(0));
}

// TIMESTAMP(p) from a DATE, a TIMESTAMP or a text in the session's form of a timestamp.
void toTimestamp(Call& c) {
  if (c.isNumber(0))
    throw inconsistent(QLatin1StringView("TIMESTAMP"), QLatin1StringView("NUMBER"));
  OracleTimestamp::Timestamp t;
  if (const auto d = c.storedDate(0))
    t = OracleTimestamp::fromDate(*d);
  else if (const auto s = c.storedTimestamp(0))
    t = *s;
  else
    t = {OracleDateTime::parse(c.text(0), u"YYYY/MM/DD HH24:MI:SS.FF", QDate::currentDate()), 9, std::nullopt};
  t.zoneMinutes.reset();
  c.set(OracleTimestamp::text(OracleTimestamp::withPrecision(t, optionalInteger(c, 2).value_or(6))));
}

// dbsweep_cast(value, type, length or precision, scale)
void cast(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  const QString type = c.text(1);
  if (type == u"NUMBER")
    return toNumber(c);
  if (type == u"VARCHAR2" || type == u"CHAR")
    return toText(c, type == u"CHAR");
  if (type == u"DATE")
    return toDate(c);
  toTimestamp(c);
}

} // namespace

namespace CastFunction {

QString typeArguments(const std::vector<SqlToken>& t, size_t begin, size_t end) {
  if (begin >= end)
    throw OraError(902, QStringLiteral("invalid datatype"));
  const QString name = t[begin].upper();
  size_t k = begin + 1;
  if (name == u"DOUBLE" && k < end && t[k].is(u"PRECISION"))
    ++k;
  // (n [BYTE | CHAR]) or (p [, s]); a number of the form is kept as written.
  QStringList sizes;
  if (k < end && t[k].is(u"(")) {
    for (++k; k < end && t[k].kind == SqlToken::Kind::Number; ++k) {
      sizes << t[k].text;
      if (k + 1 < end && t[k + 1].is(u","))
        ++k;
    }
    if (k < end && (t[k].is(u"BYTE") || t[k].is(u"CHAR")))
      ++k;
    if (k >= end || !t[k].is(u")"))
      throw OraError(907, QStringLiteral("missing right parenthesis"));
    ++k;
  }
  const QString precision = sizes.value(0, QStringLiteral("NULL"));
  const QString scale = sizes.value(1, QStringLiteral("NULL"));
  const auto arguments = [](const char* type, const QString& a, const QString& b) {
    return QStringLiteral("'%1', %2, %3").arg(QLatin1StringView(type), a, b);
  };
  QString out;
  if (name == u"NUMBER" || name == u"NUMERIC" || name == u"DECIMAL" || name == u"DEC")
    out = arguments("NUMBER", precision, scale);
  else if (name == u"INTEGER" || name == u"INT" || name == u"SMALLINT")
    out = arguments("NUMBER", QStringLiteral("38"), QStringLiteral("0"));
  else if (name == u"FLOAT" || name == u"REAL" || name == u"DOUBLE" || name == u"BINARY_FLOAT" ||
           name == u"BINARY_DOUBLE")
    out = arguments("NUMBER", QStringLiteral("NULL"), QStringLiteral("NULL"));
  else if (name == u"VARCHAR2" || name == u"VARCHAR" || name == u"NVARCHAR2") {
    if (sizes.isEmpty())
      throw OraError(906, QStringLiteral("missing left parenthesis"));
    out = arguments("VARCHAR2", precision, QStringLiteral("NULL"));
  } else if (name == u"CHAR" || name == u"NCHAR")
    out = arguments("CHAR", precision, QStringLiteral("NULL"));
  else if (name == u"CLOB" || name == u"NCLOB")
    out = arguments("VARCHAR2", QStringLiteral("2147483647"), QStringLiteral("NULL"));
  else if (name == u"DATE")
    out = arguments("DATE", QStringLiteral("NULL"), QStringLiteral("NULL"));
  else if (name == u"TIMESTAMP" && (k >= end || !t[k].is(u"WITH")))
    out = arguments("TIMESTAMP", precision, QStringLiteral("NULL"));
  else if (name == u"TIMESTAMP" || name == u"INTERVAL" || name == u"RAW" || name == u"BLOB" || name == u"LONG" ||
           name == u"ROWID" || name == u"UROWID" || name == u"XMLTYPE" || name == u"BFILE")
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  else
    throw OraError(902, QStringLiteral("invalid datatype"));
  if (k != end)
    throw OraError(907, QStringLiteral("missing right parenthesis"));
  return out;
}

void registerAll(sqlite3* db, const SessionSettings* settings) {
  static const FunctionCall::Function functions[] = {{"dbsweep_cast", 4, FunctionCall::entry<cast>}};
  FunctionCall::registerAll(db, settings, functions);
}

} // namespace CastFunction
