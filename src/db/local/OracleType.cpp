#include "db/local/OracleType.h"

namespace {

qint64 number(TokenCursor& c) {
  if (c.peek().kind != SqlToken::Kind::Number)
    TokenCursor::fail(c.peek().is(u"*") ? 902 : 1727);
  return c.next().text.toLongLong();
}

} // namespace

OracleType OracleType::parse(TokenCursor& c) {
  OracleType t;
  const QString word = c.name(902);
  const auto sized = [&](qint64 byDefault) {
    qint64 n = byDefault;
    bool chars = false;
    if (c.accept(u"(")) {
      n = number(c);
      if (c.accept(u"CHAR"))
        chars = true;
      else
        c.accept(u"BYTE");
      c.expect(u")", 907);
    }
    return std::pair(n, chars);
  };
  if (word == u"VARCHAR2" || word == u"VARCHAR" || word == u"CHAR" || word == u"CHARACTER") {
    const bool fixed = word == u"CHAR" || word == u"CHARACTER";
    if (!fixed && !c.peek().is(u"("))
      TokenCursor::fail(906);
    auto [n, chars] = sized(1);
    t.dataType = fixed ? QStringLiteral("CHAR") : QStringLiteral("VARCHAR2");
    // Character semantics in an AL32UTF8 database reserve four bytes a character.
    t.dataLength = chars ? n * 4 : n;
    t.charLength = n;
    t.sqliteType = QStringLiteral("%1(%2)").arg(t.dataType).arg(n);
  } else if (word == u"NVARCHAR2" || word == u"NCHAR") {
    if (word == u"NVARCHAR2" && !c.peek().is(u"("))
      TokenCursor::fail(906);
    auto [n, chars] = sized(1);
    Q_UNUSED(chars);
    t.dataType = word;
    t.dataLength = n * 2; // AL16UTF16
    t.charLength = n;
    t.sqliteType = QStringLiteral("%1(%2)").arg(word).arg(n);
  } else if (word == u"NUMBER" || word == u"NUMERIC" || word == u"DECIMAL" || word == u"DEC") {
    t.dataType = QStringLiteral("NUMBER");
    t.dataLength = 22;
    if (c.accept(u"(")) {
      if (c.accept(u"*"))
        t.precision = QVariant();
      else
        t.precision = number(c);
      t.scale = 0;
      if (c.accept(u",")) {
        const bool negative = c.accept(u"-");
        t.scale = negative ? -number(c) : number(c);
      }
      c.expect(u")", 907);
    } else if (word != u"NUMBER") {
      t.scale = 0;
    }
    t.sqliteType = QStringLiteral("NUMBER");
  } else if (word == u"INTEGER" || word == u"INT" || word == u"SMALLINT") {
    t.dataType = QStringLiteral("NUMBER");
    t.dataLength = 22;
    t.scale = 0;
    t.sqliteType = QStringLiteral("NUMBER");
  } else if (word == u"FLOAT" || word == u"REAL" || word == u"DOUBLE") {
    if (word == u"DOUBLE")
      c.expect(u"PRECISION", 902);
    t.dataType = QStringLiteral("FLOAT");
    t.dataLength = 22;
    t.precision = word == u"REAL" ? 63 : 126;
    if (word == u"FLOAT" && c.accept(u"(")) {
      t.precision = number(c);
      c.expect(u")", 907);
    }
    t.sqliteType = QStringLiteral("FLOAT");
  } else if (word == u"BINARY_FLOAT" || word == u"BINARY_DOUBLE") {
    t.dataType = word;
    t.dataLength = word == u"BINARY_FLOAT" ? 4 : 8;
    t.sqliteType = QStringLiteral("FLOAT");
  } else if (word == u"DATE") {
    t.dataType = word;
    t.dataLength = 7;
    t.sqliteType = QStringLiteral("DATE");
  } else if (word == u"TIMESTAMP") {
    qint64 fraction = 6;
    if (c.accept(u"(")) {
      fraction = number(c);
      c.expect(u")", 907);
    }
    QString zone;
    if (c.accept(u"WITH")) {
      const bool local = c.accept(u"LOCAL");
      c.expect(u"TIME", 905);
      c.expect(u"ZONE", 905);
      zone = local ? QStringLiteral(" WITH LOCAL TIME ZONE") : QStringLiteral(" WITH TIME ZONE");
    }
    t.dataType = QStringLiteral("TIMESTAMP(%1)%2").arg(fraction).arg(zone);
    t.dataLength = zone.contains(QStringLiteral("LOCAL")) || zone.isEmpty() ? 11 : 13;
    t.scale = fraction;
    t.sqliteType = QStringLiteral("TIMESTAMP");
  } else if (word == u"CLOB" || word == u"NCLOB" || word == u"BLOB") {
    t.dataType = word;
    t.dataLength = 4000;
    t.sqliteType = word == u"BLOB" ? QStringLiteral("BLOB") : QStringLiteral("CLOB");
  } else if (word == u"RAW") {
    c.expect(u"(", 906);
    t.dataLength = number(c);
    c.expect(u")", 907);
    t.dataType = word;
    t.sqliteType = QStringLiteral("BLOB");
  } else if (word == u"LONG") {
    const bool raw = c.accept(u"RAW");
    t.dataType = raw ? QStringLiteral("LONG RAW") : QStringLiteral("LONG");
    t.dataLength = 0;
    t.sqliteType = raw ? QStringLiteral("BLOB") : QStringLiteral("CLOB");
  } else if (word == u"ROWID") {
    t.dataType = word;
    t.dataLength = 10;
    t.sqliteType = QStringLiteral("VARCHAR2(18)");
  } else {
    TokenCursor::fail(902);
  }
  return t;
}
